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
using ConversationPhone = std::variant<Text, ContactPhoneNumber>;

/// One conversation of the message view: the names, numbers and addresses of a counterpart or group
/// and its messages, live ones first. No text of the lists is absent.
struct ConversationContact {
    std::vector<Text> Names;
    std::vector<ConversationPhone> PhoneNumbers;
    std::vector<Text> Emails;
    List<Message> Messages;
    std::vector<std::string> RowIds;
    std::int64_t HandleRowId = 0;
    std::int64_t GroupId = 0;
    std::int64_t ChatId = 0;
    salvor::Text PhoneNumberHandleId;
    bool ContainsDeletedMessage = false;
    bool NotContainsDeletedMessage = true;

    template <class Self = ConversationContact>
    static constexpr auto fields() {
        return std::make_tuple(
            field("Names", &Self::Names), field("PhoneNumbers", &Self::PhoneNumbers),
            field("Emails", &Self::Emails), field("Messages", &Self::Messages),
            field("RowIds", &Self::RowIds), field("HandleRowId", &Self::HandleRowId),
            field("GroupId", &Self::GroupId), field("ChatId", &Self::ChatId),
            field("PhoneNumberHandleId", &Self::PhoneNumberHandleId),
            field("ContainsDeletedMessage", &Self::ContainsDeletedMessage),
            field("NotContainsDeletedMessage", &Self::NotContainsDeletedMessage));
    }
};

}  // namespace salvor
