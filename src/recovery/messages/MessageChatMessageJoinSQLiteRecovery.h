#pragma once

#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/messages/MessageTableCarver.h"

namespace salvor {

/// Carves the links between chats and messages, live ones too. Kept are those with both ids.
class MessageChatMessageJoinSQLiteRecovery
    : public MessageTableCarver<AbstractSQLiteRecoveryFullSearch, ChatMessageJoin> {
  public:
    explicit MessageChatMessageJoinSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

  protected:
    void recordCarved(const std::shared_ptr<ChatMessageJoin>& join) override;
};

}  // namespace salvor
