#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "backup/PrivateFolder.h"

namespace salvor {

/// The folder "Temp" of a scan, with the sub-folders "Photos", "Videos" and "Extract". It is
/// removed and made afresh by each scan that sweeps pictures; a "Temp" without the marker file that
/// is written into each of ours is never removed. Without a parent a private folder, below the
/// user's cache or else the system's folder for passing files, is made and goes with the object.
class WorkFolder {
  public:
    /// "Temp" in `parent`, or in a private folder of this object's own.
    explicit WorkFolder(std::optional<std::filesystem::path> parent = std::nullopt);
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder();

    /// Why this "Temp" must not be used for a scan of `backup`, or "": it stands there without
    /// the marker, it is a link or a file, or the backup and it lie inside one another.
    std::string refusal(const std::filesystem::path& backup) const;
    /// Removes and makes the folder. Returns "" or the cause of the failure; `refusal` is asked
    /// again before anything is removed.
    std::string recreate(const std::filesystem::path& backup);

    /// The folder "Temp"; empty until a private one has been made.
    std::filesystem::path path() const;
    std::filesystem::path photos() const { return path() / "Photos"; }
    std::filesystem::path videos() const { return path() / "Videos"; }
    std::filesystem::path extract() const { return path() / "Extract"; }
    /// `recreate` has made it.
    bool made() const { return made_; }

  private:
    std::string makePrivateParent(const std::filesystem::path& backup);

    std::filesystem::path parent_;
    std::unique_ptr<PrivateFolder> privateFolder_;
    bool private_ = false;
    bool made_ = false;
};

}  // namespace salvor
