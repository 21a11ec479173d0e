#include "services/ConversationLookup.h"

#include <algorithm>

namespace salvor {

void ConversationLookup::extend(const List<ConversationContact>& conversations) {
    while (conversations_.size() < conversations.size()) add(conversations[conversations_.size()]);
}

void ConversationLookup::add(const Found& conversation) {
    const auto position = conversations_.size();
    conversations_.push_back(conversation);
    for (const auto& rowId : conversation->RowIds) rowIds_.emplace(rowId, position);
    for (const auto& email : conversation->Emails) emails_.emplace(email, position);
    for (const auto& name : conversation->Names) names_.emplace(name, position);
    for (const auto& phone : conversation->PhoneNumbers) addPhone(phone, position);
    if (conversation->PhoneNumberHandleId)
        counterparts_.emplace(conversation->PhoneNumberHandleId, position);
    chatIds_.emplace(conversation->ChatId, position);
}

void ConversationLookup::addPhone(const ConversationPhone& phone, std::size_t position) {
    if (const auto* text = std::get_if<Text>(&phone)) {
        phoneTexts_.add(*text, position);
        return;
    }
    // A phone-number object equals only the text that it holds.
    const auto& object = std::get<ContactPhoneNumber>(phone);
    const auto& number = object.IsPhoneNumber && object.GooglePhoneNumber ? object.GooglePhoneNumber
                                                                          : object.PhoneNumber;
    if (number) phoneObjects_.emplace(number, position);
}

ConversationLookup::Found ConversationLookup::at(const Positions& positions,
                                                 const Text& key) const {
    if (!key) return nullptr;
    const auto found = positions.find(key);
    return found != positions.end() ? conversations_[found->second] : nullptr;
}

ConversationLookup::Found ConversationLookup::FindConversationContactFromHandleId(
    const Text& handleId) const {
    return at(rowIds_, handleId);
}

ConversationLookup::Found ConversationLookup::findByChatId(std::int64_t chatId) const {
    const auto found = chatIds_.find(chatId);
    return found != chatIds_.end() ? conversations_[found->second] : nullptr;
}

ConversationLookup::Found ConversationLookup::findByCounterpart(const Text& counterpart) const {
    return at(counterparts_, counterpart);
}

ConversationLookup::Found ConversationLookup::FindContactFromConversationContactsListByPhoneNumber(
    const Text& number) const {
    auto position = phoneTexts_.find(number);
    const auto object = number ? phoneObjects_.find(number) : phoneObjects_.end();
    if (object != phoneObjects_.end())
        position = std::min(position.value_or(object->second), object->second);
    return position ? conversations_[*position] : nullptr;
}

ConversationLookup::Found ConversationLookup::FindContactFromConversationContactsListByEmailAddress(
    const Text& address) const {
    return at(emails_, address);
}

ConversationLookup::Found ConversationLookup::FindContactFromConversationContactsListByName(
    const Text& name) const {
    return at(names_, name);
}

}  // namespace salvor
