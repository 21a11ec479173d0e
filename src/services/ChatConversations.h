#pragma once

#include <functional>
#include <memory>
#include <string>

#include "records/ChatRecords.h"
#include "records/ConversationContact.h"
#include "records/List.h"
#include "records/Message.h"
#include "services/ContactLookup.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// The conversation of a live chat, named by the contacts of its handles or by the bare handles.
std::shared_ptr<ConversationContact> chatConversation(const MessageChat& chat,
                                                      const List<MessageHandle>& handles,
                                                      const ContactLookup& contacts);

/// The conversation of a carved handle, filled from its contact when there is one.
std::shared_ptr<ConversationContact> handleConversation(const Text& id, const std::string& rowId,
                                                        const Contact* contact);

/// Hands over the live messages of all chats in date order, each with its `ChatId`; one that stands
/// in two chats comes twice.
void forEachLiveChatMessage(FMDBUtils& database,
                            const std::function<void(std::shared_ptr<Message>)>& take);

}  // namespace salvor
