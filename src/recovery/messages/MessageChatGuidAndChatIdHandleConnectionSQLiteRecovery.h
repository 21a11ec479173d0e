#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/AbstractSQLiteRecoveryFullSearch.h"
#include "recovery/RecordCarver.h"

namespace salvor {

/// Carves which row id a chat GUID ("SMS;-;+15550100") had, of live chats too, and with it the
/// chat's counterpart. Row ids above the largest one that the database ever handed out are noise,
/// as are GUIDs cut off before the counterpart.
class MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery
    : public RecordCarver<AbstractSQLiteRecoveryFullSearch,
                          MessageChatGuidAndChatIdHandleConnection> {
  public:
    static const SignatureUse<MessageChatGuidAndChatIdHandleConnection> kSignature;

    explicit MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery(ScanState& state,
                                                                    std::stop_token cancelled = {});

    /// Where set, takes each link in place of `RecoveredFiltered`.
    std::function<void(const MessageChatGuidAndChatIdHandleConnection&)> takeLink;

  protected:
    void beforeRecovery() override { maxChatRowId_ = getMaxRowIdforTable("chat"); }
    void recordCarved(
        const std::shared_ptr<MessageChatGuidAndChatIdHandleConnection>& link) override;

  private:
    std::int32_t maxChatRowId_ = 0;
};

}  // namespace salvor
