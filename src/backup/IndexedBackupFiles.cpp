#include "backup/IndexedBackupFiles.h"

#include <utility>

#include "backup/BackupLock.h"

namespace salvor {

IndexedBackupFiles::IndexedBackupFiles(std::filesystem::path folder)
    : FolderBackupFiles(folder), folder_(std::move(folder)) {}

std::string IndexedBackupFiles::nameFor(const std::string& domain, const std::string& path) const {
    const auto found = index()->find(domain, path);
    return found ? index()->entry(*found).storedName.value_or("")
                 : FolderBackupFiles::nameFor(domain, path);
}

std::optional<std::int64_t> IndexedBackupFiles::indexedDate(const std::string& storedName) const {
    const auto number = index()->find(storedName);
    return number ? std::optional(index()->details(*number).modified) : std::nullopt;
}

const BackupIndex* IndexedBackupFiles::index() const {
    std::call_once(once_, [this] { index_ = readIndex(folder_, *this); });
    return index_.get();
}

}  // namespace salvor
