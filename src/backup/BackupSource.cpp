#include "backup/BackupSource.h"

#include <fmt/format.h>
#include <utility>

#include "backup/BackupLock.h"
#include "backup/BackupStore.h"
#include "backup/DecryptedBackupFiles.h"
#include "backup/FolderBackupFiles.h"
#include "backup/IndexedBackupFiles.h"

namespace salvor {

std::shared_ptr<const BackupFiles> openBackup(const std::filesystem::path& folder) {
    auto files = std::make_shared<const FolderBackupFiles>(folder);
    if (!BackupStore::databaseIndex(*files)) return files;
    return std::make_shared<const IndexedBackupFiles>(folder);
}

std::shared_ptr<const BackupFiles> openBackup(const std::filesystem::path& folder,
                                              std::shared_ptr<const BackupKeys> keys) {
    if (keys == nullptr) return openBackup(folder);
    auto store = std::make_shared<PrivateStore>(folder);
    auto index = readIndex(folder, FolderBackupFiles(folder), keys.get(), store);
    return std::make_shared<const DecryptedBackupFiles>(folder, std::move(index), std::move(keys),
                                                        std::move(store));
}

void useBackup(ScanState& state, const std::filesystem::path& folder,
               std::shared_ptr<const BackupKeys> keys) {
    state.BACKUP_DIRECTORY = folder.string();
    state.setBackupFiles(openBackup(folder, std::move(keys)));
}

std::string indexNotice(const BackupFiles& files) {
    const auto path = BackupStore::databaseIndex(files);
    const BackupIndex* index = files.index();
    if (!path || index == nullptr) return {};
    if (index->size() == 0 && !index->damage().empty())
        return fmt::format("{}: {}; files are found by their stored names all the same",
                           path->string(), index->damage());
    // The folder is asked: sizes of what is encrypted would take all keys.
    const FolderBackupFiles folder(path->parent_path());
    std::size_t missing = 0;
    std::size_t empty = 0;
    for (std::size_t i = 0; i < index->size(); ++i) {
        const auto entry = index->entry(i);
        if (entry.kind != EntryKind::File) continue;
        const auto facts = folder.find(entry.storedName.value_or(""));
        if (!facts) ++missing;
        if (facts && facts.size == 0) ++empty;
    }
    if (missing == 0 && index->damage().empty()) return {};
    const auto counts = index->count();
    const std::string damage = index->damage().empty() ? "" : index->damage() + "; until then it ";
    return fmt::format(
        "{}: {}lists {} files, {} folders and {} links; {} of the files are not in the backup and "
        "{} are empty",
        path->string(), damage, counts.files, counts.folders, counts.links, missing, empty);
}

}  // namespace salvor
