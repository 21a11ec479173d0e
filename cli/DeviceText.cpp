#include "cli/DeviceText.h"

#include "backup/BackupInfoReader.h"

namespace salvor::cli {

std::string encryptionText(const std::filesystem::path& backup, const DeviceInfo& device) {
    if (readVersionFacts(backup).manifestSaysEncrypted) return "yes";
    return device.knownIfEncrypted ? "no" : "unknown";
}

}  // namespace salvor::cli
