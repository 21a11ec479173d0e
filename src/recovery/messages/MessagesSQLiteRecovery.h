#pragma once

#include <memory>
#include <stop_token>
#include <string>

#include "records/Message.h"
#include "records/SMS.h"
#include "recovery/RecordCarver.h"
#include "util/TextMap.h"

namespace salvor {

/// The carver of deleted messages that a scan runs, whatever the iOS version. A carved message
/// whose GUID is neither live nor found before becomes a list row of the scan at once and enters
/// `RecoveredFiltered` with it; any other enters no list.
class MessagesSQLiteRecovery : public RecordCarver<AbstractSqLiteRecovery, Message> {
  public:
    static const SignatureUse<Message> kSignature;

    explicit MessagesSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Whether a live row or a deleted one found so far is roughly equal to `row`.
    bool alreadyInDB(const SMS& row);

  protected:
    void recordCarved(const std::shared_ptr<Message>& message) override;
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;

  private:
    void indexNewRows(const List<SMS>& rows, std::size_t& indexed);

    // Rows are roughly equal when their GUIDs are, so the GUIDs seen stand for the two lists. The
    // lists only grow while the carver lives.
    TextMap<NoValue> guids_;
    std::size_t liveIndexed_ = 0;
    std::size_t deletedIndexed_ = 0;
};

}  // namespace salvor
