#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/ChatRecords.h"
#include "records/ConversationContact.h"
#include "records/List.h"
#include "records/Message.h"
#include "recovery/AbstractSqLiteRecovery.h"
#include "services/ContactLookup.h"
#include "services/abstractServices.h"

namespace salvor {

/// Base of the message services: builds the conversations of the message database and attaches
/// every carved message to one. Made once per scan and run once through `RecoverFromIOSBackup`,
/// after the contacts are complete. A database that does not open has no conversations.
class MessageServices : public abstractServices {
  public:
    /// The service that the scan drives, whatever the version. Kept: chat-layout-always.
    static std::unique_ptr<MessageServices> initwithDevice(ScanState& state,
                                                           const DeviceInfo& device);

    using HandlesOfChats = std::unordered_map<std::int64_t, List<MessageHandle>>;

    const List<ConversationContact>& ConversationContacts() const { return _ConversationContacts; }

    std::vector<std::int64_t> groupIdsInDB();
    List<MessageChat> MessageChatsInDB();
    List<MessageHandle> GetMesssageHandlesFromMessageChatInDB(const MessageChat& chat);
    /// The handles of every chat by its row id, each chat's in the order of the operation above,
    /// which takes a statement for each chat.
    HandlesOfChats handlesOfChatsInDB();

    virtual std::unique_ptr<AbstractSqLiteRecovery> GetRecoveryObject();
    /// Runs the carver and puts each carved message in front of the conversation that its address
    /// names; one that names none stays without.
    virtual void RecoverDeletedMessages(const DeviceInfo& device);
    /// Appends the live messages of one group, newest first.
    void LoadConversationMessages(const std::shared_ptr<ConversationContact>& conversation,
                                  const DeviceInfo& device);

  protected:
    explicit MessageServices(ScanState& state);

    /// Makes the service's connection afresh.
    void connect(const DeviceInfo& device);
    /// The conversations of the group layout, and with them the whole run.
    void recoverGroups(const DeviceInfo& device);
    void recoverGroupMessages(const DeviceInfo& device);
    /// Leaves the conversations to the message view.
    void publishConversations() { state_.Conversations = _ConversationContacts; }

    List<ConversationContact> _ConversationContacts;

  private:
    std::shared_ptr<ConversationContact> groupConversation(std::int64_t groupId,
                                                           const ContactLookup& contacts);
};

/// Marks `conversation` as holding a deleted message and ties `message` to it, without listing it.
void tieDeletedMessage(const std::shared_ptr<ConversationContact>& conversation, Message& message);

/// A phone-number object that holds this text.
ContactPhoneNumber phoneNumberOf(const Text& text);

}  // namespace salvor
