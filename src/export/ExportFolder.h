#pragma once

#include <filesystem>
#include <string>

namespace salvor {

/// The new folder of one export. While it is written it is called "NAME.part", so that whatever
/// ends the program leaves nothing under the name of a whole export. Where NAME is taken it becomes
/// "NAME (2)" and so on. Only its owner may enter it.
class ExportFolder {
  public:
    /// Makes the folder in `target`, which is made when missing. Returns 0 or the error (errno).
    int make(const std::filesystem::path& target, const std::string& name);
    /// Gives the folder its name. Returns 0 or the error, after which it keeps the other one.
    int finish();

    /// Where it lies now, or was to lie when it could not be made.
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path numbered(int number) const;

    std::filesystem::path target_;
    std::string name_;
    std::filesystem::path path_;
};

}  // namespace salvor
