#pragma once

#include <filesystem>
#include <memory>

#include "backup/keys/BackupKeys.h"
#include "scan/ScanState.h"

namespace salvor {

/// The files of the backup in `folder`; the one place that decides how they are reached. A folder
/// that is no backup has no files.
std::shared_ptr<const BackupFiles> openBackup(const std::filesystem::path& folder);

/// The same of an encrypted backup whose keys were opened: files come decrypted.
std::shared_ptr<const BackupFiles> openBackup(const std::filesystem::path& folder,
                                              std::shared_ptr<const BackupKeys> keys);

/// Makes the backup in `folder` the source of the next scan; `keys` are null for one that is not
/// encrypted or stays locked.
void useBackup(ScanState& state, const std::filesystem::path& folder,
               std::shared_ptr<const BackupKeys> keys = nullptr);

/// What is to be said of the index of a backup: damage, and how many listed files are missing or
/// empty. "" when all is well and for a backup without such an index.
std::string indexNotice(const BackupFiles& files);

}  // namespace salvor
