#pragma once

#include <memory>
#include <mutex>

#include "backup/IndexDates.h"
#include "scan/BackupFiles.h"

namespace salvor {

/// The files of a backup that lie plain in a folder: those of older backups flat, those of newer
/// ones in sub-folders named by the first two digits of the stored name. A file is looked for flat
/// first; one that is nowhere is placed flat.
class FolderBackupFiles : public BackupFiles {
  public:
    explicit FolderBackupFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}

    FileFacts find(const std::string& storedName) const override;
    BackupFile open(const std::string& storedName) const override;
    BackupFile own(const std::string& name) const override;
    std::unique_ptr<StoredFileList> list() const override;
    std::optional<std::string> storedNameAt(const std::filesystem::path& place) const override;
    /// The index is read when this is asked for the first time.
    std::optional<std::int64_t> indexedDate(const std::string& storedName) const override;
    std::uint64_t totalBytes() const override;

  private:
    std::filesystem::path nested(const std::string& storedName) const;

    std::filesystem::path folder_;
    mutable std::once_flag datesRead_;
    mutable std::unique_ptr<const IndexDates> dates_;
};

}  // namespace salvor
