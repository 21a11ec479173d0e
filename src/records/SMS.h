#pragma once

#include <cstdint>

#include "records/Field.h"
#include "records/RecordOrigin.h"
#include "util/Text.h"

namespace salvor {

/// List row of a message. Kept: two-row-ids.
struct SMS {
    std::int32_t SlNo = 0;
    std::int32_t RowID = 0;
    std::int32_t RowId = 0;
    std::int32_t handleID = 0;
    salvor::Text Address;
    salvor::Text LocalTime;
    salvor::Text Message;
    salvor::Text Type;
    salvor::Text service;
    salvor::Text GUID;
    std::int32_t isChecked = 0;
    bool isRecovered = false;
    OptionalOrigin Origin;

    /// Equal GUIDs; an absent GUID equals nothing.
    bool isRoughlyEqual(const SMS& other) const;

    template <class Self = SMS>
    static constexpr auto fields() {
        return std::make_tuple(
            field("SlNo", &Self::SlNo), field("RowID", &Self::RowID), field("RowId", &Self::RowId),
            field("handleID", &Self::handleID), field("Address", &Self::Address),
            field("LocalTime", &Self::LocalTime), field("Message", &Self::Message),
            field("Type", &Self::Type), field("service", &Self::service),
            field("GUID", &Self::GUID), field("isChecked", &Self::isChecked),
            field("isRecovered", &Self::isRecovered));
    }
};

}  // namespace salvor
