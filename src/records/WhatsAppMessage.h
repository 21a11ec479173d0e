#pragma once

#include <memory>
#include <string>

#include "records/WhatsApp.h"
#include "records/WhatsAppContact.h"
#include "records/WhatsAppMessageAttachment.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

class RecordContext;

/// One WhatsApp message. `_zmesssageDate` holds the message date as text, under that spelling.
struct WhatsAppMessage : baseRecoveryObject {
    bool IsActivated = false;
    bool IsVisible = false;
    bool IsFromMe = false;
    bool isChecked = false;
    std::int64_t ZPrimaryKey = 0;
    std::weak_ptr<WhatsAppContact> whatsAppContact;
    std::shared_ptr<WhatsAppMessageAttachment> whatsAppMessageAttachment;
    salvor::Text ZText;
    salvor::Text _zmesssageDate;
    salvor::Text ZFromJid;
    salvor::Text ZPushName;
    salvor::Text ZToJid;
    salvor::Text ZStandZAid;
    salvor::Text Date;
    double OriginalDate = 0;

    std::shared_ptr<WhatsApp> generateWhatsAppObject(RecordContext& context) const;
    salvor::Text ContactFullName() const;
    salvor::Text ContactPhone() const;
    /// "Sent" or "Received".
    std::string Type() const;
    bool HasAttachment() const { return whatsAppMessageAttachment != nullptr; }
    /// What stands before the last "@" of the sender (from me) or the recipient; "" when the "@"
    /// stands first or is missing.
    std::string GetZMessageNumberOrEmpty() const;
    bool IsEqual(const WhatsAppMessage& other) const;

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(
                field("IsActivated", &WhatsAppMessage::IsActivated),
                field("IsVisible", &WhatsAppMessage::IsVisible),
                field("IsFromMe", &WhatsAppMessage::IsFromMe),
                field("isChecked", &WhatsAppMessage::isChecked),
                field("ZPrimaryKey", &WhatsAppMessage::ZPrimaryKey),
                field("whatsAppContact", &WhatsAppMessage::whatsAppContact),
                field("whatsAppMessageAttachment", &WhatsAppMessage::whatsAppMessageAttachment),
                field("ZText", &WhatsAppMessage::ZText),
                field("_zmesssageDate", &WhatsAppMessage::_zmesssageDate),
                field("ZFromJid", &WhatsAppMessage::ZFromJid),
                field("ZPushName", &WhatsAppMessage::ZPushName),
                field("ZToJid", &WhatsAppMessage::ZToJid),
                field("ZStandZAid", &WhatsAppMessage::ZStandZAid),
                field("Date", &WhatsAppMessage::Date),
                field("OriginalDate", &WhatsAppMessage::OriginalDate)));
    }
};

}  // namespace salvor
