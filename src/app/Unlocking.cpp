#include "app/Unlocking.h"

#include <fmt/format.h>

#include "backup/BackupLock.h"
#include "backup/FolderBackupFiles.h"

namespace salvor {
namespace {

OpenedBackup unsupported(const std::filesystem::path& backup, const std::string& cause) {
    return {Opening::Unsupported, nullptr, backup.string() + ": " + cause};
}

}  // namespace

bool isEncrypted(const std::filesystem::path& backup) {
    return lockOf(FolderBackupFiles(backup)).encrypted;
}

OpenedBackup openWithPassword(const std::filesystem::path& backup, const Secret& password,
                              const std::stop_token& stop, const RoundsWatch& watch) {
    const FolderBackupFiles files(backup);
    const BackupLock lock = lockOf(files);
    if (!lock.encrypted) return {};
    if (!lock.bag) return unsupported(backup, "its key bag holds no key that a password opens");
    // Before anybody waits for a derivation that helps nothing.
    if (lock.manifestKey.empty() && hidesMetadata(*readIndex(backup, files)))
        return unsupported(backup,
                           "its index keeps what it tells of the files encrypted, as iOS 10.0 did "
                           "alone; how is not known, so no password opens it");
    auto [result, keys] = unlock(*lock.bag, password.bytes(), stop, watch);
    switch (result) {
        case Unlock::Open:
            return {Opening::Open, std::move(keys), ""};
        case Unlock::Cancelled:
            return {Opening::Cancelled, nullptr, ""};
        case Unlock::TooManyRounds:
            return unsupported(backup,
                               fmt::format("its key takes {} rounds to derive; more than {} are "
                                           "not tried",
                                           lock.bag->rounds(), kMostRounds));
        case Unlock::WrongPassword:
            break;
    }
    return {Opening::WrongPassword, nullptr,
            backup.string() + ": the password does not open this backup"};
}

}  // namespace salvor
