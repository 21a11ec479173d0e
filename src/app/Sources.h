#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "backup/BackupInfoReader.h"
#include "backup/BackupStore.h"

namespace salvor {

/// A path that a person named, or why it is of no use: naming the path and the cause.
struct NamedSource {
    std::filesystem::path path;
    std::string fault;  ///< "" when there is none
};

/// The folder of the backup that was named by its folder or a property list inside.
NamedSource findBackupFolder(const std::filesystem::path& named);
/// The index file of what was named: a file, or a backup folder.
NamedSource findIndexFile(const std::filesystem::path& named);

/// "" or why `path` is no folder that can be listed.
std::string whyNoFolder(const std::filesystem::path& path);
/// "" or why `path` is no regular file that can be read.
std::string whyNoFile(const std::filesystem::path& path);

struct FoundBackups {
    std::vector<BackupEntry> entries;
    std::vector<std::string> faults;  ///< of each folder that could not be looked into
};

/// The backups in `root`, or without one those in the places where backups usually are. `root` is
/// a readable folder.
FoundBackups findBackups(const std::optional<std::filesystem::path>& root);

/// "" or, for a folder that is no backup itself, which backups lie directly below it.
std::string backupsBelow(const std::filesystem::path& folder);

/// What the property lists of a folder tell, and what is wrong with them.
struct BackupDescription {
    BackupInfo info;
    bool isBackup = true;  ///< else there is nothing to show
    std::string fault;     ///< "" when the description is complete
};

BackupDescription describeBackup(const std::filesystem::path& folder);

enum class Encryption { No, Yes, Unknown };

/// Asks the manifest of `backup` too, for the description does not always.
Encryption encryptionOf(const std::filesystem::path& backup, const DeviceInfo& device);
/// "no", "yes" or "unknown".
const char* encryptionText(Encryption encryption);

/// What a person does about an encrypted backup.
inline constexpr const char* kEncryptedAdvice =
    "the manifest says that the backup is encrypted, so its databases cannot be read without its "
    "password; give it with --password-file, or type it when you are asked at a terminal";

}  // namespace salvor
