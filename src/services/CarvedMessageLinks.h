#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/ChatRecords.h"
#include "records/ConversationContact.h"
#include "records/Message.h"
#include "services/ConversationLookup.h"
#include "util/TextMap.h"

namespace salvor {

/// The carved links of a message database, hashed: GUID to message row id, message to chat, chat to
/// handle, chat to counterpart. Where several links of one kind match, the one carved first wins.
/// Kept: first-link-wins.
class CarvedMessageLinks {
  public:
    void add(const MessageGuidRowId& link);
    void add(const ChatMessageJoin& link);
    void add(const MessageChatGuidAndChatIdHandleConnection& link);
    /// Links a chat to the first conversation that `known` finds by one of its handles.
    void add(const ChatHandleJoin& link, const ConversationLookup& known);

    /// The conversation of a carved message: by its own row id and then by that of its GUID, each
    /// through the chat, which is known to `known` itself or through one of its handles. Null when
    /// no link leads to one.
    std::shared_ptr<ConversationContact> conversationOf(const Message& message,
                                                        const ConversationLookup& known) const;
    /// The counterpart named by the carved GUID of the message's chat; absent without one.
    Text counterpartOf(const Message& message) const;

  private:
    std::vector<std::int64_t> chatsOf(const Message& message) const;

    TextMap<std::int64_t> messageOfGuid_;
    std::unordered_map<std::int64_t, std::int64_t> chatOfMessage_;
    std::unordered_map<std::int64_t, Text> counterpartOfChat_;
    std::unordered_map<std::int64_t, std::shared_ptr<ConversationContact>> conversationOfChat_;
};

}  // namespace salvor
