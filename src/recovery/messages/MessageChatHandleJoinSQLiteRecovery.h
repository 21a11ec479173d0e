#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/AbstractSQLiteRecoveryFullSearch.h"
#include "recovery/RecordCarver.h"

namespace salvor {

/// Carves the links between chats and handles, live ones too. Kept are those with a chat.
class MessageChatHandleJoinSQLiteRecovery
    : public RecordCarver<AbstractSQLiteRecoveryFullSearch, ChatHandleJoin> {
  public:
    static const SignatureUse<ChatHandleJoin> kSignature;

    explicit MessageChatHandleJoinSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Where set, takes each link in place of `RecoveredFiltered`, as a small row makes a record of
    /// many times its size.
    std::function<void(const ChatHandleJoin&)> takeLink;

  protected:
    void recordCarved(const std::shared_ptr<ChatHandleJoin>& join) override;
};

}  // namespace salvor
