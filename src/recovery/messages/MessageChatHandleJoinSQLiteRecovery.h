#pragma once

#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/messages/MessageTableCarver.h"

namespace salvor {

/// Carves the links between chats and handles, live ones too. Kept are those with a chat.
class MessageChatHandleJoinSQLiteRecovery
    : public MessageTableCarver<AbstractSQLiteRecoveryFullSearch, ChatHandleJoin> {
  public:
    explicit MessageChatHandleJoinSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

  protected:
    void recordCarved(const std::shared_ptr<ChatHandleJoin>& join) override;
};

}  // namespace salvor
