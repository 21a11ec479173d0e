#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "records/WhatsAppContact.h"
#include "recovery/WhatsAppMessagesSQLiteRecovery.h"
#include "services/abstractServices.h"

namespace salvor {

/// The WhatsApp category: carves deleted messages and groups what it finds by partner. Live rows
/// are read from whichever place holds a chat database. Kept: first-whatsapp-place-carved.
class WhatsAppService : public abstractServices {
  public:
    explicit WhatsAppService(ScanState& state);

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    void doRecovery(const DeviceInfo& device);
    /// Attaches every carved message to its partner.
    void AdditionalFiltering();

    /// Reads the live partners, their messages and attachments. No step of a scan calls it.
    void getWhatisExisting(const DeviceInfo& device);
    std::shared_ptr<WhatsAppMessageAttachment> RetrieveWhatsAppMessageAttachments(
        const DeviceInfo& device, std::int64_t messageKey);

    const List<WhatsAppContact>& partners() const { return partners_; }

  private:
    void getWhatisExistingWallPaperPath(const DeviceInfo& device);
    void readMessages(const DeviceInfo& device, const std::shared_ptr<WhatsAppContact>& partner);
    std::shared_ptr<WhatsAppContact> partnerFor(const Text& jid);

    std::unique_ptr<WhatsAppMessagesSQLiteRecovery> whatsAppRecovery_;
    List<WhatsAppContact> partners_;
    std::unordered_map<Text, std::shared_ptr<WhatsAppContact>> byJid_;
};

}  // namespace salvor
