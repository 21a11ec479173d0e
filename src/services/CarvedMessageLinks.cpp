#include "services/CarvedMessageLinks.h"

#include "util/StringUtils.h"

namespace salvor {
namespace {

// A carved record without a row id of its own has the row id 1, so 1 says nothing.
std::int64_t rowIdOf(const Message& message) {
    if (message.MessageId > 0) return message.MessageId;
    return message.RowId > 1 ? message.RowId : 0;
}

}  // namespace

void CarvedMessageLinks::add(const MessageGuidRowId& link) {
    messageOfGuid_.tryEmplace(link.Guid, link.RowId);
}

void CarvedMessageLinks::add(const ChatMessageJoin& link) {
    chatOfMessage_.try_emplace(link.MessageId, link.ChatId);
}

void CarvedMessageLinks::add(const MessageChatGuidAndChatIdHandleConnection& link) {
    if (!StringUtils::IsNullOrEmpty(link.Id)) counterpartOfChat_.emplace(link.RowId, link.Id);
}

void CarvedMessageLinks::add(const ChatHandleJoin& link, const ConversationLookup& known) {
    if (!link.HandleId || conversationOfChat_.contains(link.ChatId)) return;
    auto conversation = known.FindConversationContactFromHandleId(link.HandleId);
    if (conversation != nullptr) conversationOfChat_.emplace(link.ChatId, std::move(conversation));
}

std::vector<std::int64_t> CarvedMessageLinks::chatsOf(const Message& message) const {
    std::vector<std::int64_t> chats;
    const auto addChatOf = [&](std::int64_t messageId) {
        const auto chat = chatOfMessage_.find(messageId);
        if (chat != chatOfMessage_.end()) chats.push_back(chat->second);
    };
    addChatOf(rowIdOf(message));
    if (const auto* row = messageOfGuid_.find(message.Guid)) addChatOf(*row);
    return chats;
}

std::shared_ptr<ConversationContact> CarvedMessageLinks::conversationOf(
    const Message& message, const ConversationLookup& known) const {
    for (const auto chat : chatsOf(message)) {
        if (auto conversation = known.findByChatId(chat)) return conversation;
        const auto byHandle = conversationOfChat_.find(chat);
        if (byHandle != conversationOfChat_.end()) return byHandle->second;
    }
    return nullptr;
}

Text CarvedMessageLinks::counterpartOf(const Message& message) const {
    for (const auto chat : chatsOf(message)) {
        const auto counterpart = counterpartOfChat_.find(chat);
        if (counterpart != counterpartOfChat_.end()) return counterpart->second;
    }
    return std::nullopt;
}

}  // namespace salvor
