#pragma once

#include <filesystem>
#include <string>

#include "records/DeviceInfo.h"

namespace salvor::cli {

/// "yes", "no" or "unknown". Asks the manifest too, for the description does not always.
std::string encryptionText(const std::filesystem::path& backup, const DeviceInfo& device);

/// What a person does about an encrypted backup.
inline constexpr const char* kEncryptedAdvice =
    "the manifest says that the backup is encrypted, so its databases cannot be read; switch the "
    "encryption of backups off where it was made, back up again into another folder and scan that";

}  // namespace salvor::cli
