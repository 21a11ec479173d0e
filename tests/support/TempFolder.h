#pragma once

#include <filesystem>
#include <string>

namespace salvor {

/// A private folder below the system's temporary folder, removed with everything in it at the end
/// of its life. Throws std::filesystem::filesystem_error when it cannot be made.
class TempFolder {
  public:
    explicit TempFolder(const std::string& prefix = "salvor");
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

  private:
    std::filesystem::path path_;
};

}  // namespace salvor
