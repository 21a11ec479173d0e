#pragma once

#include <filesystem>
#include <memory>

namespace salvor {

/// A folder that belongs to one run and goes with the object. It carries a lock for as long as its
/// owner lives: making one first removes the folders that killed runs left beside it.
class PrivateFolder {
  public:
    /// A new folder below `parent`, which is made if need be; null when that fails.
    static std::unique_ptr<PrivateFolder> make(const std::filesystem::path& parent);
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
