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

    template <class Self = ContactABMultiValue>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(field("RecordId", &Self::RecordId), field("Property", &Self::Property),
                            field("Identifier", &Self::Identifier), field("Label", &Self::Label),
                            field("value", &Self::value), field("Guid", &Self::Guid)));
    }
};

}  // namespace salvor
