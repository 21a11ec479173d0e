#pragma once

#include <mutex>

#include "backup/FolderBackupFiles.h"
#include "scan/BackupIndex.h"

namespace salvor {

/// The files of a backup whose index is a database and which is not encrypted: they lie as in any
/// folder, and the index, read when it is asked for first, tells their names. An index that cannot
/// be read lists nothing; then files are found by the rule of their names.
class IndexedBackupFiles : public FolderBackupFiles {
  public:
    explicit IndexedBackupFiles(std::filesystem::path folder);

    std::string nameFor(const std::string& domain, const std::string& path) const override;
    const BackupIndex* index() const override;
    std::optional<std::int64_t> indexedDate(const std::string& storedName) const override;

  private:
    std::filesystem::path folder_;
    mutable std::once_flag once_;
    mutable std::shared_ptr<const BackupIndex> index_;
};

}  // namespace salvor
