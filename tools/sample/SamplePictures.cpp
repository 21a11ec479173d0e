#include <algorithm>
#include <string>

#include "tools/sample/Digest.h"
#include "tools/sample/PhotoLibraryFile.h"
#include "tools/sample/SampleFolder.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

using namespace std::string_literals;

const std::string kJfif = "\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1"s;
const std::string kExif =
    "\xFF\xD8\xFF\xE1\0\x10"
    "Exif\0\0"s;
const std::string kPng = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s;
const std::string kFilm =
    "\0\0\0\x14"
    "ftypqt  "s;
const std::string kOtherFilm =
    "\0\0\0\x14"
    "ftypmp42"s;

/// What the photo library of a generation is like.
struct Generation {
    int ios;
    int layoutCode;
    const char* cameraRoll;       ///< domain of library and camera roll
    const char* thumbnailFolder;  ///< below "Media"
    int leftBehind = -1;          ///< layout code of a library in the older place
};

constexpr Generation kGenerations[] = {
    {4, 0, "MediaDomain", "PhotoData/100APPLE/"},
    {5, 3, "CameraRollDomain", "PhotoData/100APPLE/", 0},
    {6, 1, "CameraRollDomain", "PhotoData/100APPLE/"},
    {7, 2, "CameraRollDomain", "PhotoData/100APPLE/"},
    {8, 4, "CameraRollDomain", "PhotoData/Thumbnails/V2/"},
    {9, 6, "CameraRollDomain", "PhotoData/Thumbnails/V2/", 5},
};

/// An asset of the library, the kind of its file and how a sweep of all files lists it.
struct SamplePicture {
    SampleAsset asset;
    const std::string& head;
    const char* sweptAs;  ///< "Photos", "Videos" or "" for what a sweep leaves out
    int firstIos;
};

const SamplePicture kPictures[] = {
    {{"DCIM/100APPLE", "IMG_0001.JPG"}, kJfif, "Photos", 4},
    {{"DCIM/100APPLE", "IMG_0002.JPG"}, kExif, "", 4},
    {{"DCIM/100APPLE", "IMG_0003.PNG"}, kPng, "Photos", 4},
    {{"DCIM/100APPLE", "IMG_0004.MOV"}, kFilm, "Videos", 4},
    {{"DCIM/100APPLE", "IMG_0005.MOV"}, kOtherFilm, "", 4},
    {{"DCIM/100APPLE", "IMG_0006.JPG", true}, kJfif, "Photos", 8},
    {{"DCIM/100APPLE", "IMG_0007.MOV", true}, kFilm, "Videos", 8},
    {{"PhotoStreamsData/1234567/100APPLE", "IMG_0008.JPG"}, kExif, "", 5},
    {{"PhotoData/Sync/100SYNCD", "IMG_0101.JPG"}, kJfif, "Photos", 4},
};

class PictureWriter {
  public:
    PictureWriter(SampleFolder& folder, const Generation& generation)
        : folder_(folder), generation_(generation) {}

    void writeAll() {
        std::vector<SampleAsset> assets;
        std::vector<SampleAsset> synchronised;
        for (const auto& picture : kPictures) {
            if (picture.firstIos > generation_.ios) continue;
            const auto& asset = picture.asset;
            const bool media = !asset.directory.starts_with("DCIM");
            writeFile(media ? "MediaDomain" : generation_.cameraRoll,
                      "Media/" + asset.directory + "/" + asset.file, picture.head, picture.sweptAs);
            assets.push_back(dated(asset));
            if (asset.directory.starts_with("PhotoData")) synchronised.push_back(assets.back());
        }
        writeThumbnails();
        writeLibrary(generation_.cameraRoll, generation_.layoutCode, assets);
        // What the computer sent lies in both libraries.
        if (generation_.leftBehind >= 0)
            writeLibrary("MediaDomain", generation_.leftBehind, synchronised);
    }

  private:
    SampleAsset dated(SampleAsset asset) {
        asset.created = folder_.device().startOfUse - 978307200 + 86400 * ++days_;
        asset.modified = asset.created + 60;
        return asset;
    }

    // Heads with noise behind them: enough for a program that only looks at the first bytes.
    void writeFile(const char* domain, const std::string& path, const std::string& head,
                   const char* sweptAs) {
        writeWholeFile(folder_.add(domain, path), head + random_.digits(2000));
        if (*sweptAs == '\0') return;
        TruthRow row;
        row.database = sampleStoredName(domain, path);
        row.table = sweptAs;
        row.text = path;
        folder_.truth().live.push_back(std::move(row));
    }

    void writeThumbnails() {
        const std::string base = "Media/"s + generation_.thumbnailFolder + "DCIM/100APPLE/";
        writeFile(generation_.cameraRoll, base + "IMG_0001.JPG/5003.JPG", kJfif, "Photos");
        writeFile(generation_.cameraRoll, base + "IMG_0004.MOV/5005.JPG", kJfif, "Photos");
    }

    void writeLibrary(const char* domain, int layoutCode, const std::vector<SampleAsset>& assets) {
        constexpr const char* kPath = "Media/PhotoData/Photos.sqlite";
        writePhotoLibrary(folder_.add(domain, kPath), layoutCode, assets, sampleLayout(folder_));
        std::int64_t key = 0;
        for (const auto& asset : assets) {
            TruthRow row;
            row.database = sampleStoredName(domain, kPath);
            row.table = layoutCode == 0 ? "Photo" : "ZGENERICASSET";
            row.rowId = ++key;
            row.text = asset.directory + "/" + asset.file;
            row.date = asset.created;
            const bool media = !asset.directory.starts_with("DCIM");
            row.handle = sampleStoredName(media ? "MediaDomain" : generation_.cameraRoll,
                                          "Media/" + *row.text);
            row.values["trashed"] = std::int64_t{asset.trashed};
            folder_.truth().live.push_back(std::move(row));
        }
    }

    SampleFolder& folder_;
    const Generation& generation_;
    SampleRandom random_{folder_.options().seed + 77};
    std::int64_t days_ = 0;
};

}  // namespace

void writeSamplePictures(SampleFolder& folder) {
    const int newest = std::end(kGenerations)[-1].ios;
    for (const auto& generation : kGenerations) {
        if (generation.ios == std::min(folder.device().ios, newest))
            PictureWriter(folder, generation).writeAll();
    }
}

}  // namespace salvor
