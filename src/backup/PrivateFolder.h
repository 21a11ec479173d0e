#pragma once

#include <filesystem>
#include <memory>
#include <vector>

namespace salvor {

/// A folder that belongs to one run and goes with the object. It carries a lock for as long as its
/// owner lives: making one first removes the folders that killed runs left beside it.
class PrivateFolder {
  public:
    /// A new folder below `parent`, which is made if need be; null when that fails.
    static std::unique_ptr<PrivateFolder> make(const std::filesystem::path& parent);
    /// Where such folders are made: below the user's cache, else below the system's folder for
    /// passing files.
    static std::vector<std::filesystem::path> usualParents();
    /// The same on file systems that keep files in memory alone.
    static std::vector<std::filesystem::path> memoryParents();
    /// Removes what killed runs left in all these places.
    static void removeLeftovers();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder();

    const std::filesystem::path& path() const { return path_; }

  private:
    PrivateFolder(std::filesystem::path path, int lock) : path_(std::move(path)), lock_(lock) {}

    std::filesystem::path path_;
    int lock_;  ///< open descriptor of the folder, locked
};

}  // namespace salvor
