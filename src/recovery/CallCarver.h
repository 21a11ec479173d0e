#pragma once

#include "records/CallHistory.h"
#include "records/ContactNames.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// What the carvers of both call databases share: one signature key whatever the file, and every
/// completed record becomes a deleted call, marked or not. No live-row test is part of a run.
class CallCarver : public CategoryCarver<CallHistory> {
  public:
    /// The live-row test, for callers that want it. It names the older database's table for both
    /// databases, so on the newer one every record is kept: deliberate.
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

/// Carver of call_history.db (iOS 7 and earlier). Its dates are Unix seconds, read as seconds
/// since 2001, so they come out 31 years late: deliberate.
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
