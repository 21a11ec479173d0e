#pragma once

#include <memory>
#include <string>

#include "records/WhatsApp.h"
#include "records/WhatsAppContact.h"
#include "records/WhatsAppMessageAttachment.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

class RecordContext;

/// One WhatsApp message. `_zmesssageDate` holds the date as text. Kept: field-spellings.
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

    template <class Self = WhatsAppMessage>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(
                field("IsActivated", &Self::IsActivated), field("IsVisible", &Self::IsVisible),
                field("IsFromMe", &Self::IsFromMe), field("isChecked", &Self::isChecked),
                field("ZPrimaryKey", &Self::ZPrimaryKey),
                field("whatsAppContact", &Self::whatsAppContact),
                field("whatsAppMessageAttachment", &Self::whatsAppMessageAttachment),
                field("ZText", &Self::ZText), field("_zmesssageDate", &Self::_zmesssageDate),
                field("ZFromJid", &Self::ZFromJid), field("ZPushName", &Self::ZPushName),
                field("ZToJid", &Self::ZToJid), field("ZStandZAid", &Self::ZStandZAid),
                field("Date", &Self::Date), field("OriginalDate", &Self::OriginalDate)));
    }
};

}  // namespace salvor
