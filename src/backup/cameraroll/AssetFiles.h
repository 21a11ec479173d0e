#pragma once

#include <memory>
#include <string>
#include <utility>

#include "backup/cameraroll/Dcmi.h"
#include "backup/cameraroll/PhotoLibrary.h"
#include "scan/BackupFiles.h"

namespace salvor {

/// Finds the stored files of photo-library assets in one backup.
class AssetFiles {
  public:
    AssetFiles(std::shared_ptr<const BackupFiles> files, PhotoLibraryLayout layout)
        : files_(std::move(files)), layout_(layout) {}

    /// Fills the asset's path and thumbnail and settles its deleted mark by kind and directory.
    /// Kept: videos-count-as-deleted.
    void locate(Dcmi& asset, bool video) const;

    /// The thumbnail of an asset; the built-in picture for a video and the asset's own path for a
    /// photo when there is none. Kept: first-thumbnail-is-a-location.
    std::string ResolveThumbnailPath(PhotoLibraryLayout layout, const std::string& file,
                                     const std::string& directory, bool video,
                                     const std::string& dcmiPath) const;

  private:
    std::shared_ptr<const BackupFiles> files_;
    PhotoLibraryLayout layout_;
};

}  // namespace salvor
