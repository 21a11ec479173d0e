#pragma once

#include "records/CallHistory.h"
#include "records/ContactNames.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// What the carvers of both call databases share: one signature key whatever the file, and every
/// completed record becomes a deleted call, marked or not. No live-row test is part of a run.
class CallCarver : public CategoryCarver<CallHistory> {
  public:
    /// The live-row test, for callers that want it: by the older database's table. Kept:
    /// calls-against-older-table.
    void filterMessages();

  protected:
    CallCarver(ScanState& state, std::stop_token cancelled, const SignatureUse<CallHistory>& use);

    bool needsRecoveredMark() const override { return false; }
    void recordCarved(const std::shared_ptr<CallHistory>& call) override;
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;

  private:
    ContactNames names_;
};

/// Carver of call_history.db (iOS 7 and earlier), whose dates are Unix seconds. Kept:
/// calls-31-years-late.
class CallHistorySQLiteRecovery : public CallCarver {
  public:
    static const SignatureUse<CallHistory> kSignature;

    explicit CallHistorySQLiteRecovery(ScanState& state, std::stop_token cancelled = {});
};

/// Carver of CallHistory.storedata (iOS 8 and later).
class CallHistoryIos8Recovery : public CallCarver {
  public:
    static const SignatureUse<CallHistory> kSignature;

    explicit CallHistoryIos8Recovery(ScanState& state, std::stop_token cancelled = {});

  protected:
    void recordCarved(const std::shared_ptr<CallHistory>& call) override;
};

}  // namespace salvor
