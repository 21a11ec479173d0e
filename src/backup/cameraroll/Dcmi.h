#pragma once

#include <memory>
#include <string>
#include <vector>

#include "records/ListRows.h"
#include "util/Text.h"

namespace salvor {

/// One asset of the device's photo library.
struct Dcmi {
    std::string ZDirecotry;  ///< directory text of the database. Kept: field-spellings.
    std::string ZFilename;
    std::string DcmiName;
    bool Recovered = false;  ///< the asset is deleted
    Text CreatedDate;
    Text ModifiedDate;
    std::string DcmiPath;  ///< where the asset's file lies in the backup folder
    std::string DcmiThumbnailPath;

    std::shared_ptr<Photo> convertToPhoto() const;
    std::shared_ptr<Video> convertToVideo() const;
};

/// A named folder of the camera roll.
struct DcmiFolder {
    std::string name;
    bool IsVideosFolder = false;
    bool ContainsDeleted = false;
    std::vector<std::shared_ptr<Dcmi>> assets;
};

}  // namespace salvor
