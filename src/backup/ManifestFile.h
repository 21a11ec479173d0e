#pragma once

#include <memory>
#include <string>

#include "backup/PrivateStore.h"
#include "backup/keys/BackupKeys.h"
#include "backup/manifest/ManifestDatabase.h"
#include "scan/BackupFiles.h"

namespace salvor {

/// Opens Manifest.db, decrypted where it is encrypted, with the log beside it applied: both on a
/// copy in `store`. `manifestKey` is that of Manifest.plist. Null, and `fault` says why, when it
/// cannot be read.
std::shared_ptr<const ManifestDatabase> openManifest(const BackupFiles& files,
                                                     const BackupKeys* keys,
                                                     const std::string& manifestKey,
                                                     std::shared_ptr<PrivateStore> store,
                                                     std::string& fault);

}  // namespace salvor
