#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "records/DeviceInfo.h"
#include "scan/BackupFiles.h"

namespace salvor {

/// One backup folder that was found.
struct BackupEntry {
    std::filesystem::path path;
    DeviceInfo device;
    std::uint64_t sizeInBytes = 0;
    /// Unix seconds; the backup's own date, else the newest of the folder and its property lists.
    std::int64_t lastModified = 0;
};

/// Where backups are looked for, and what lies there.
class BackupStore {
  public:
    /// The user's home folder.
    static std::filesystem::path homeFolder();
    /// "Library/Application Support/MobileSync/Backup/" below the user's home.
    static std::filesystem::path standardLocation();
    /// The standard location and those of the synchronisation software on other systems; a
    /// location need not exist.
    static std::vector<std::filesystem::path> usualLocations();

    /// `root` itself when it is a backup, else the backups directly below it, by name. A folder
    /// counts as a backup when it holds one of the property lists or an index.
    static std::vector<BackupEntry> listBackups(const std::filesystem::path& root);
    /// Their folders alone, which is quick.
    static std::vector<std::filesystem::path> backupFolders(const std::filesystem::path& root);
    /// What of `root` and the folders directly below it is there and cannot be listed.
    static std::vector<std::filesystem::path> closedFolders(const std::filesystem::path& root);
    static bool looksLikeBackup(const std::filesystem::path& folder);

    /// The backup folder that a person named: a readable folder, or the folder of a property-list
    /// file. Nothing for anything else.
    static std::optional<std::filesystem::path> resolve(const std::filesystem::path& named);
    /// The index file that a person named: a file, or the index of a backup folder.
    static std::optional<std::filesystem::path> resolveIndex(const std::filesystem::path& named);
    /// The index of a newer backup, which is a database and not read yet; nothing when the folder
    /// holds an index of the older form or none.
    static std::optional<std::filesystem::path> databaseIndex(const BackupFiles& files);
    static std::optional<std::filesystem::path> databaseIndex(const std::filesystem::path& folder);
    /// Folders in `backup` and then in the folder that holds it whose names begin with
    /// `identifier`, without `backup` itself; each in the order of the names.
    static std::vector<std::filesystem::path> olderBackups(const std::filesystem::path& backup,
                                                           const std::string& identifier);
};

}  // namespace salvor
