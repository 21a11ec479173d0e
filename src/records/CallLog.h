#pragma once

#include <cstdint>

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
    OptionalOrigin Origin;

    template <class Self = CallLog>
    static constexpr auto fields() {
        return std::make_tuple(
            field("SlNo", &Self::SlNo), field("Address", &Self::Address),
            field("LocalTime", &Self::LocalTime), field("PhoneNumber", &Self::PhoneNumber),
            field("CallType", &Self::CallType), field("ContactName", &Self::ContactName),
            field("CallDuration", &Self::CallDuration), field("CallMode", &Self::CallMode),
            field("isChecked", &Self::isChecked), field("OriginalAddress", &Self::OriginalAddress));
    }
};

}  // namespace salvor
