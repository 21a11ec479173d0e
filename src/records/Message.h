#pragma once

#include <memory>

#include "records/ConversationContact.h"
#include "records/MessageAttachment.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

struct SMS;
class RecordContext;

/// One text message or iMessage. `OriginalDate...` are the raw numbers of the database, `Date...`
/// the same instants as display texts. Readers address "OriginalDataDelivered" by that name.
/// Kept: field-spellings.
struct Message : baseRecoveryObject {
    bool IsActivated = false;
    bool IsVisible = false;
    bool HasAttachment = false;
    bool IsSelected = false;
    bool IsFromMe = false;
    std::int32_t Flags = 0;
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
    std::int64_t HandleId = 0;

    /// The list row of a carved message. A counterpart that cannot be found is named "unknownN",
    /// N counting through the whole run.
    std::shared_ptr<SMS> generateSMSObject(RecordContext& context) const;

    template <class Self = Message>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(
                field("IsActivated", &Self::IsActivated), field("IsVisible", &Self::IsVisible),
                field("HasAttachment", &Self::HasAttachment),
                field("IsSelected", &Self::IsSelected),
                field("ConversationContact", &Self::ConversationContact),
                field("MessageAttachment", &Self::MessageAttachment),
                field("ContactFullName", &Self::ContactFullName),
                field("ContactPhone", &Self::ContactPhone),
                field("ContactEmail", &Self::ContactEmail), field("Address", &Self::Address),
                field("AccountGuid", &Self::AccountGuid), field("Guid", &Self::Guid),
                field("OriginalDate", &Self::OriginalDate),
                field("OriginalDateRead", &Self::OriginalDateRead),
                field("OriginalDataDelivered", &Self::OriginalDataDelivered),
                field("Date", &Self::Date), field("DateRead", &Self::DateRead),
                field("DateDelivered", &Self::DateDelivered), field("Id", &Self::Id),
                field("IsFromMe", &Self::IsFromMe), field("HandleId", &Self::HandleId),
                field("Flags", &Self::Flags)));
    }
};

}  // namespace salvor
