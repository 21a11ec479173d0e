#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/AbstractSQLiteRecoveryFullSearch.h"
#include "recovery/RecordCarver.h"

namespace salvor {

/// Carves the links between chats and messages, live ones too. Kept are those with both ids.
class MessageChatMessageJoinSQLiteRecovery
    : public RecordCarver<AbstractSQLiteRecoveryFullSearch, ChatMessageJoin> {
  public:
    static const SignatureUse<ChatMessageJoin> kSignature;

    explicit MessageChatMessageJoinSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Where set, takes each link in place of `RecoveredFiltered`: a large database has millions.
    std::function<void(const ChatMessageJoin&)> takeLink;

  protected:
    void recordCarved(const std::shared_ptr<ChatMessageJoin>& join) override;
};

}  // namespace salvor
