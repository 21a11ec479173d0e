#include "backup/BackupSource.h"

#include "backup/FolderBackupFiles.h"

namespace salvor {

std::shared_ptr<const BackupFiles> openBackup(const std::filesystem::path& folder) {
    return std::make_shared<const FolderBackupFiles>(folder);
}

void useBackup(ScanState& state, const std::filesystem::path& folder) {
    state.BACKUP_DIRECTORY = folder.string();
    state.setBackupFiles(openBackup(folder));
}

}  // namespace salvor
