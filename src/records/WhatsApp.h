#pragma once

#include <cstdint>
#include <optional>

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
    std::optional<RecordOrigin> Origin;

    /// Equal `MessageDate`, `FromMsgID`, `ToMsgID` and `zText`, absent and empty being the same.
    bool isRoughlyEqual(const WhatsApp& other) const;

    static constexpr auto fields() {
        return std::make_tuple(
            field("MessageDate", &WhatsApp::MessageDate), field("FromMsgID", &WhatsApp::FromMsgID),
            field("ToMsgID", &WhatsApp::ToMsgID), field("zText", &WhatsApp::zText),
            field("ContactName", &WhatsApp::ContactName), field("PhoneNo", &WhatsApp::PhoneNo),
            field("isSent", &WhatsApp::isSent), field("ishavingName", &WhatsApp::ishavingName),
            field("isChecked", &WhatsApp::isChecked));
    }
};

}  // namespace salvor
