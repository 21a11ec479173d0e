#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "services/CarvedMessageLinks.h"
#include "services/ConversationLookup.h"
#include "services/MessageServices.h"

namespace salvor {

/// Messages of the chat and handle layout (iOS 6 and later), and the service that every scan runs.
/// A conversation is a live chat, a run of carved handles with the same id, or the unknown
/// counterpart of a carved message; no carved message stays without one. Carved messages of an
/// unknown handle share its conversation, those without a handle get one each.
class messageServicesIOS7_8 : public MessageServices {
  public:
    explicit messageServicesIOS7_8(ScanState& state) : MessageServices(state) {}

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    void RecoverDeletedMessages(const DeviceInfo& device) override;

    /// The first conversation one of whose `RowIds` is this text.
    std::shared_ptr<ConversationContact> FindConversationContactFromHandleId(
        const std::string& handleId);
    /// The contact with this serial number, live ones first.
    std::shared_ptr<Contact> findContactFromHandleId(std::int64_t handleId) const;
    /// Stores the number of each carved row's handle as its address. No step of a scan calls it.
    void updateSMSAddresses();
    /// Stores the second number of the contact that a carved row names as its address. No step of a
    /// scan calls it.
    void updatePhoneNumbersInMessages();

  private:
    void addChatConversations();
    void addLiveMessages();
    void addCarvedHandles(const DeviceInfo& device);
    CarvedMessageLinks carveLinks(const DeviceInfo& device);
    std::shared_ptr<ConversationContact> conversationOf(Message& message,
                                                        const CarvedMessageLinks& links);
    std::shared_ptr<ConversationContact> addUnknownConversation(const Message& message);

    ContactLookup contacts_;
    ConversationLookup known_;
    ConversationLookup named_;  ///< conversations made for carved counterparts that have an id
    std::unordered_map<std::int64_t, std::shared_ptr<ConversationContact>> madeForHandle_;
    std::int32_t nextUnknown_ = 1;
};

}  // namespace salvor
