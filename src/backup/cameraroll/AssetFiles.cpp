#include "backup/cameraroll/AssetFiles.h"

#include <array>
#include <optional>
#include <string_view>

#include "util/StoredName.h"

namespace salvor {
namespace {

constexpr std::string_view kMediaDomain = "MediaDomain-Media/";
constexpr std::string_view kCameraRollDomain = "CameraRollDomain-Media/";
constexpr std::string_view kVideoPicture =
    "/Salvor.DcmiModule;component/Resources/video-thumbnail.png";

std::string_view domainPrefix(PhotoLibraryLayout layout) {
    return layout == PhotoLibraryLayout::Photo ? kMediaDomain : kCameraRollDomain;
}

std::string_view thumbnailFolder(PhotoLibraryLayout layout) {
    switch (layout) {
        case PhotoLibraryLayout::Z16:
        case PhotoLibraryLayout::Plain:
            return "PhotoData/Thumbnails/V2/";
        case PhotoLibraryLayout::ThumbnailFallback:
            return "";
        default:
            return "PhotoData/100APPLE/";
    }
}

struct Location {
    std::string_view prefix;
    bool deleted;
};

// Domain and deleted mark by directory. Kept: videos-count-as-deleted.
Location locationOf(const Dcmi& asset, bool video, PhotoLibraryLayout layout) {
    const std::string_view directory = asset.ZDirecotry;
    const auto prefix = domainPrefix(layout);
    if (directory.starts_with("DCIM")) return {prefix, video || asset.Recovered};
    if (directory.starts_with("PhotoStreamsData")) return {kMediaDomain, video};
    if (!video && directory.starts_with("PhotoData/Sync")) return {kMediaDomain, true};
    return {prefix, true};
}

std::optional<std::string> findThumbnail(const BackupFiles& files, PhotoLibraryLayout layout,
                                         const std::string& file, const std::string& directory) {
    const std::string folder =
        std::string(domainPrefix(layout)) + std::string(thumbnailFolder(layout)) + directory + "/";
    static constexpr std::array<std::string_view, 4> kSizes{"/5003.JPG", "/5004.JPG", "/5005.JPG",
                                                            "/5002.JPG"};
    for (const auto size : kSizes) {
        const std::string location = folder + file + std::string(size);
        const auto stored = files.find(storedName(location));
        if (!stored) continue;
        // Kept: first-thumbnail-is-a-location.
        return size == kSizes.front() ? location : stored.place.string();
    }
    const auto dot = file.find('.');
    const std::string stem = dot == std::string::npos ? file + "." : file.substr(0, dot + 1);
    const auto stored = files.find(storedName(folder + stem + "THM"));
    return stored ? std::optional(stored.place.string()) : std::nullopt;
}

}  // namespace

void AssetFiles::locate(Dcmi& asset, bool video) const {
    const auto [prefix, deleted] = locationOf(asset, video, layout_);
    const std::string location = std::string(prefix) + asset.ZDirecotry + "/" + asset.ZFilename;
    asset.DcmiPath = files_->find(storedName(location)).place.string();
    asset.Recovered = deleted;
    asset.DcmiThumbnailPath =
        ResolveThumbnailPath(layout_, asset.ZFilename, asset.ZDirecotry, video, asset.DcmiPath);
}

std::string AssetFiles::ResolveThumbnailPath(PhotoLibraryLayout layout, const std::string& file,
                                             const std::string& directory, bool video,
                                             const std::string& dcmiPath) const {
    auto found = findThumbnail(*files_, layout, file, directory);
    // Kept: second-thumbnail-search.
    if (!found && !video && layout == PhotoLibraryLayout::Photo &&
        directory.starts_with("PhotoData/Sync")) {
        found = findThumbnail(*files_, PhotoLibraryLayout::ThumbnailFallback, file, directory);
    }
    if (found) return *found;
    return video ? std::string(kVideoPicture) : dcmiPath;
}

}  // namespace salvor
