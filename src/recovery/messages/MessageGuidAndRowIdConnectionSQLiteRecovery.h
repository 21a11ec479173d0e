#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/AbstractSQLiteRecoveryFullSearch.h"
#include "recovery/RecordCarver.h"

namespace salvor {

/// Carves which row id a message GUID had, of live messages too. A row id above the largest one
/// that the database ever handed out is noise and dropped.
class MessageGuidAndRowIdConnectionSQLiteRecovery
    : public RecordCarver<AbstractSQLiteRecoveryFullSearch, MessageGuidRowId> {
  public:
    static const SignatureUse<MessageGuidRowId> kSignature;

    explicit MessageGuidAndRowIdConnectionSQLiteRecovery(ScanState& state,
                                                         std::stop_token cancelled = {});

    /// Where set, takes each link in place of `RecoveredFiltered`: a large database has millions.
    std::function<void(const MessageGuidRowId&)> takeLink;

    /// The largest message row id ever handed out; -1 when that cannot be told.
    std::int32_t getMaxMessageRowId() { return getMaxRowIdforTable("message"); }

  protected:
    void beforeRecovery() override { _maxMessageRowId = getMaxMessageRowId(); }
    void recordCarved(const std::shared_ptr<MessageGuidRowId>& link) override;
};

}  // namespace salvor
