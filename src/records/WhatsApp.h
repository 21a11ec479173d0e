#pragma once

#include <cstdint>

#include "records/Field.h"
#include "records/RecordOrigin.h"
#include "util/Text.h"

namespace salvor {

/// List row of a WhatsApp message.
struct WhatsApp {
    salvor::Text MessageDate;
    salvor::Text FromMsgID;
    salvor::Text ToMsgID;
    salvor::Text zText;
    salvor::Text ContactName;
    salvor::Text PhoneNo;
    bool isSent = false;
    bool ishavingName = false;
    std::int32_t isChecked = 0;
    OptionalOrigin Origin;

    /// Equal `MessageDate`, `FromMsgID`, `ToMsgID` and `zText`, absent and empty being the same.
    bool isRoughlyEqual(const WhatsApp& other) const;

    template <class Self = WhatsApp>
    static constexpr auto fields() {
        return std::make_tuple(
            field("MessageDate", &Self::MessageDate), field("FromMsgID", &Self::FromMsgID),
            field("ToMsgID", &Self::ToMsgID), field("zText", &Self::zText),
            field("ContactName", &Self::ContactName), field("PhoneNo", &Self::PhoneNo),
            field("isSent", &Self::isSent), field("ishavingName", &Self::ishavingName),
            field("isChecked", &Self::isChecked));
    }
};

}  // namespace salvor
