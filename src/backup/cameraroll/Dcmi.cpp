#include "backup/cameraroll/Dcmi.h"

namespace salvor {

std::shared_ptr<Photo> Dcmi::convertToPhoto() const {
    auto photo = std::make_shared<Photo>();
    photo->Name = DcmiName;
    photo->Location = DcmiPath;
    return photo;
}

std::shared_ptr<Video> Dcmi::convertToVideo() const {
    auto video = std::make_shared<Video>();
    video->Name = DcmiName;
    video->Location = DcmiPath;
    video->Image = DcmiThumbnailPath;
    return video;
}

}  // namespace salvor
