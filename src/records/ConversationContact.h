#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "records/ContactPhoneNumber.h"
#include "records/Field.h"
#include "records/List.h"
#include "util/Text.h"

namespace salvor {

struct Message;

/// One entry of `PhoneNumbers`: a bare text or a phone-number object.
using ConversationPhone = std::variant<std::string, ContactPhoneNumber>;

/// One conversation of the message view: the names, numbers and addresses of a counterpart or group
/// and its messages, live ones first.
struct ConversationContact {
    std::vector<std::string> Names;
    std::vector<ConversationPhone> PhoneNumbers;
    std::vector<std::string> Emails;
    List<Message> Messages;
    std::vector<std::string> RowIds;
    std::int64_t HandleRowId = 0;
    std::int64_t GroupId = 0;
    std::int64_t ChatId = 0;
    salvor::Text PhoneNumberHandleId;
    bool ContainsDeletedMessage = false;
    bool NotContainsDeletedMessage = true;

    static constexpr auto fields() {
        return std::make_tuple(
            field("Names", &ConversationContact::Names),
            field("PhoneNumbers", &ConversationContact::PhoneNumbers),
            field("Emails", &ConversationContact::Emails),
            field("Messages", &ConversationContact::Messages),
            field("RowIds", &ConversationContact::RowIds),
            field("HandleRowId", &ConversationContact::HandleRowId),
            field("GroupId", &ConversationContact::GroupId),
            field("ChatId", &ConversationContact::ChatId),
            field("PhoneNumberHandleId", &ConversationContact::PhoneNumberHandleId),
            field("ContainsDeletedMessage", &ConversationContact::ContainsDeletedMessage),
            field("NotContainsDeletedMessage", &ConversationContact::NotContainsDeletedMessage));
    }
};

}  // namespace salvor
