#pragma once

#include <string>
#include <unordered_set>

#include "records/WhatsAppMessage.h"
#include "recovery/RecordCarver.h"

namespace salvor {

/// Carves deleted WhatsApp messages (ZWAMESSAGE). A carved row counts as deleted when no live
/// message and no earlier carved one is roughly equal to it. Kept: whatsapp-by-content.
class WhatsAppMessagesSQLiteRecovery
    : public RecordCarver<AbstractSqLiteRecovery, WhatsAppMessage> {
  public:
    static const SignatureUse<WhatsAppMessage> kSignature;

    explicit WhatsAppMessagesSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    bool alreadyInDB(const WhatsApp& row);
    /// Sorts what was found by date, oldest first, for callers that want it. A scan lists the
    /// messages in the order in which they were found.
    void filterMessages();
    /// As the common rule, but only corrections of -1, 0 and 1 are accepted.
    std::int32_t verifyDataPosition(Bytes text) override;
    /// 0 unless `field` is "ZStandZAid"; else the place of "-" in the record's `ZStandZAid`,
    /// counted from 11. Nothing calls it.
    std::int32_t verifyData(const std::string& field) const;

  protected:
    void recordCarved(const std::shared_ptr<WhatsAppMessage>& message) override;
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;

  private:
    void indexNewRows(const List<WhatsApp>& rows, std::size_t& indexed);

    // Rows are roughly equal when their contents are, so the contents seen stand for both lists.
    std::unordered_set<std::string> seen_;
    std::size_t liveIndexed_ = 0;
    std::size_t deletedIndexed_ = 0;
};

}  // namespace salvor
