#pragma once

#include <memory>
#include <optional>
#include <string>

#include "backup/PrivateStore.h"
#include "backup/keys/BackupKeys.h"
#include "scan/BackupFiles.h"
#include "scan/BackupIndex.h"

namespace salvor {

/// What Manifest.plist says of a backup's encryption. What is there decides, not the version.
struct BackupLock {
    bool encrypted = false;
    std::optional<KeyBag> bag;  ///< nothing without one that a password opens
    std::string manifestKey;    ///< class and wrapped key of the index; "" when it is readable
};

BackupLock lockOf(const BackupFiles& files);

/// The index of the backup in `folder`, whichever it has, through the keys when it is encrypted.
/// Never null: an index that cannot be read lists nothing and says why (`damage`).
std::shared_ptr<const BackupIndex> readIndex(const std::filesystem::path& folder,
                                             const BackupFiles& files,
                                             const BackupKeys* keys = nullptr,
                                             std::shared_ptr<PrivateStore> store = nullptr);

/// Whether the metadata of the files is encrypted in the index itself, as iOS 10.0 had it: nothing
/// of such a backup but names can be read, with no password.
bool hidesMetadata(const BackupIndex& index);

}  // namespace salvor
