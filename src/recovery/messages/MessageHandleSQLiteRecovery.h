#pragma once

#include <memory>
#include <stop_token>

#include "records/ChatRecords.h"
#include "recovery/RecordCarver.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// Carves deleted handles (counterparts). A handle is kept when its `Id` is readable text and no
/// live row equals it.
class MessageHandleSQLiteRecovery : public RecordCarver<AbstractSqLiteRecovery, MessageHandle> {
  public:
    static const SignatureUse<MessageHandle> kSignature;

    explicit MessageHandleSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Whether `id` is present and, up to its first zero byte, holds printable ASCII alone.
    static bool IsValid(const Text& id);

  protected:
    void beforeRecovery() override;
    void recordCarved(const std::shared_ptr<MessageHandle>& handle) override;
    void afterRecovery() override { database_.reset(); }

  private:
    bool isLive(const MessageHandle& handle);

    std::unique_ptr<FMDBUtils> database_;  ///< null when the live database does not open
};

}  // namespace salvor
