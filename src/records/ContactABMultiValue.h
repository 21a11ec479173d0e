#pragma once

#include <cstdint>

#include "records/baseRecoveryObject.h"

namespace salvor {

/// A carved row of ABMultiValue.
struct ContactABMultiValue : baseRecoveryObject {
    std::int64_t RecordId = 0;
    std::int64_t Property = 0;
    std::int64_t Identifier = 0;
    std::int64_t Label = 0;
    salvor::Text MultiValue;

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(field("RecordId", &ContactABMultiValue::RecordId),
                            field("Property", &ContactABMultiValue::Property),
                            field("Identifier", &ContactABMultiValue::Identifier),
                            field("Label", &ContactABMultiValue::Label),
                            field("MultiValue", &ContactABMultiValue::MultiValue)));
    }
};

}  // namespace salvor
