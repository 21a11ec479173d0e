#include "cli/DeviceText.h"

namespace salvor::cli {

std::string encryptionText(const DeviceInfo& device) {
    if (!device.knownIfEncrypted) return "unknown";
    return device.isEncrypted ? "yes" : "no";
}

}  // namespace salvor::cli
