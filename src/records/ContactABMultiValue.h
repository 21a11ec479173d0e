#pragma once

#include <cstdint>

#include "records/baseRecoveryObject.h"

namespace salvor {

/// A carved row of the address book's multi-value table.
struct ContactABMultiValue : baseRecoveryObject {
    std::int64_t RecordId = 0;
    std::int64_t Property = 0;
    std::int64_t Identifier = 0;
    std::int64_t Label = 0;
    salvor::Text value;
    salvor::Text Guid;

    /// Equal in all six fields; an absent text equals nothing.
    bool IsEqual(const ContactABMultiValue& other) const;

    static constexpr auto fields() {
        using C = ContactABMultiValue;
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(field("RecordId", &C::RecordId), field("Property", &C::Property),
                            field("Identifier", &C::Identifier), field("Label", &C::Label),
                            field("value", &C::value), field("Guid", &C::Guid)));
    }
};

}  // namespace salvor
