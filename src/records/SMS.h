#pragma once

#include <cstdint>
#include <optional>

#include "records/Field.h"
#include "records/RecordOrigin.h"
#include "util/Text.h"

namespace salvor {

/// List row of a message. `RowID` and `RowId` are two separate fields on purpose.
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
    std::optional<RecordOrigin> Origin;

    /// Equal GUIDs; an absent GUID equals nothing.
    bool isRoughlyEqual(const SMS& other) const;

    static constexpr auto fields() {
        return std::make_tuple(
            field("SlNo", &SMS::SlNo), field("RowID", &SMS::RowID), field("RowId", &SMS::RowId),
            field("handleID", &SMS::handleID), field("Address", &SMS::Address),
            field("LocalTime", &SMS::LocalTime), field("Message", &SMS::Message),
            field("Type", &SMS::Type), field("service", &SMS::service), field("GUID", &SMS::GUID),
            field("isChecked", &SMS::isChecked), field("isRecovered", &SMS::isRecovered));
    }
};

}  // namespace salvor
