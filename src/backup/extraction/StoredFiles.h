#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "util/ReadableFile.h"

namespace salvor {

/// The regular files of a backup folder, those in its two-digit sub-folders included, by name.
/// Links, pipes and other folders are left out. Keeps one descriptor, of the folder, and the names
/// in one block, so that a backup of hundreds of thousands of files costs some megabytes. A folder
/// that cannot be read has no files.
class StoredFiles {
  public:
    explicit StoredFiles(const std::filesystem::path& backup);
    StoredFiles(const StoredFiles&) = delete;
    StoredFiles& operator=(const StoredFiles&) = delete;
    ~StoredFiles();

    std::size_t size() const { return starts_.size(); }
    /// The path of a file inside the backup folder.
    const char* name(std::size_t index) const { return names_.data() + starts_[index]; }
    std::optional<ReadableFile> open(std::size_t index) const;

  private:
    void list(const std::string& subFolder, std::vector<std::string>* subFolders);
    void add(const std::string& subFolder, const char* name);

    int folder_ = -1;
    std::string names_;                ///< each ends with a zero byte
    std::vector<std::size_t> starts_;  ///< in the order of the names
};

}  // namespace salvor
