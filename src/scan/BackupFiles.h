#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace salvor {

/// The one way to a file of a backup: stored name in, path out. Older backups keep all files flat
/// in the folder, newer ones in sub-folders named by the first two digits of the stored name.
class BackupFiles {
  public:
    BackupFiles() = default;
    explicit BackupFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}

    const std::filesystem::path& folder() const { return folder_; }

    /// The file with this stored name, flat first, then in its sub-folder; nothing when neither
    /// exists.
    std::optional<std::filesystem::path> find(const std::string& storedName) const;
    /// As `find`, but the flat path of a file that does not exist.
    std::filesystem::path path(const std::string& storedName) const;

  private:
    std::filesystem::path folder_;
};

}  // namespace salvor
