#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "scan/BackupFiles.h"

namespace salvor {

/// The regular files of a backup folder, those in its two-digit sub-folders included, by name.
/// Links, pipes and other folders are left out. Keeps one descriptor, of the folder, and the names
/// in one block, so that a backup of hundreds of thousands of files costs some megabytes. A folder
/// that cannot be read has no files.
class FolderFileList : public StoredFileList {
  public:
    explicit FolderFileList(std::filesystem::path backup);
    FolderFileList(const FolderFileList&) = delete;
    FolderFileList& operator=(const FolderFileList&) = delete;
    ~FolderFileList() override;

    std::size_t size() const override { return starts_.size(); }
    std::filesystem::path place(std::size_t index) const override { return backup_ / name(index); }
    std::uint64_t fileSize(std::size_t index) const override;
    FileHead readHead(std::size_t index, std::span<std::uint8_t> head) const override;
    FileCopy copyTo(std::size_t index, const std::filesystem::path& target,
                    const FileCopyOptions& options) const override;
    bool sharesBlocks(std::size_t index, const std::filesystem::path& folder) const override;

  private:
    /// The path of a file inside the backup folder.
    const char* name(std::size_t index) const { return names_.data() + starts_[index]; }
    void list(const std::string& subFolder, std::vector<std::string>* subFolders);
    void add(const std::string& subFolder, const char* name);

    std::filesystem::path backup_;
    int folder_ = -1;
    std::string names_;                ///< each ends with a zero byte
    std::vector<std::size_t> starts_;  ///< in the order of the names
};

}  // namespace salvor
