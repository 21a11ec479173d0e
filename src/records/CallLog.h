#pragma once

#include <cstdint>
#include <optional>

#include "records/Field.h"
#include "records/RecordOrigin.h"
#include "util/Text.h"

namespace salvor {

/// List row of a call. `CallDuration` is in seconds.
struct CallLog {
    std::int32_t SlNo = 0;
    salvor::Text Address;
    salvor::Text LocalTime;
    salvor::Text PhoneNumber;
    salvor::Text CallType;
    salvor::Text ContactName;
    std::int32_t CallDuration = 0;
    salvor::Text CallMode;
    std::int32_t isChecked = 0;
    salvor::Text OriginalAddress;
    std::optional<RecordOrigin> Origin;

    static constexpr auto fields() {
        return std::make_tuple(
            field("SlNo", &CallLog::SlNo), field("Address", &CallLog::Address),
            field("LocalTime", &CallLog::LocalTime), field("PhoneNumber", &CallLog::PhoneNumber),
            field("CallType", &CallLog::CallType), field("ContactName", &CallLog::ContactName),
            field("CallDuration", &CallLog::CallDuration), field("CallMode", &CallLog::CallMode),
            field("isChecked", &CallLog::isChecked),
            field("OriginalAddress", &CallLog::OriginalAddress));
    }
};

}  // namespace salvor
