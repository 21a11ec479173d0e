#pragma once

#include <memory>

#include "records/ConversationContact.h"
#include "records/MessageAttachment.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

struct SMS;
class RecordContext;

/// One text message or iMessage. `OriginalDate...` are the raw numbers of the database, `Date...`
/// the same instants as display texts. "OriginalDataDelivered" is the spelling that readers
/// address.
struct Message : baseRecoveryObject {
    bool IsActivated = false;
    bool IsVisible = false;
    bool HasAttachment = false;
    bool IsSelected = false;
    std::weak_ptr<salvor::ConversationContact> ConversationContact;
    std::shared_ptr<salvor::MessageAttachment> MessageAttachment;
    salvor::Text ContactFullName;
    salvor::Text ContactPhone;
    salvor::Text ContactEmail;
    salvor::Text Address;
    salvor::Text AccountGuid;
    salvor::Text Guid;
    double OriginalDate = 0;
    double OriginalDateRead = 0;
    double OriginalDataDelivered = 0;
    salvor::Text Date;
    salvor::Text DateRead;
    salvor::Text DateDelivered;
    salvor::Text Id;
    bool IsFromMe = false;
    std::int64_t HandleId = 0;
    std::int32_t Flags = 0;

    /// The list row of a carved message. A counterpart that cannot be found is named "unknownN",
    /// N counting through the whole run.
    std::shared_ptr<SMS> generateSMSObject(RecordContext& context) const;

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(
                field("IsActivated", &Message::IsActivated),
                field("IsVisible", &Message::IsVisible),
                field("HasAttachment", &Message::HasAttachment),
                field("IsSelected", &Message::IsSelected),
                field("ConversationContact", &Message::ConversationContact),
                field("MessageAttachment", &Message::MessageAttachment),
                field("ContactFullName", &Message::ContactFullName),
                field("ContactPhone", &Message::ContactPhone),
                field("ContactEmail", &Message::ContactEmail), field("Address", &Message::Address),
                field("AccountGuid", &Message::AccountGuid), field("Guid", &Message::Guid),
                field("OriginalDate", &Message::OriginalDate),
                field("OriginalDateRead", &Message::OriginalDateRead),
                field("OriginalDataDelivered", &Message::OriginalDataDelivered),
                field("Date", &Message::Date), field("DateRead", &Message::DateRead),
                field("DateDelivered", &Message::DateDelivered), field("Id", &Message::Id),
                field("IsFromMe", &Message::IsFromMe), field("HandleId", &Message::HandleId),
                field("Flags", &Message::Flags)));
    }
};

}  // namespace salvor
