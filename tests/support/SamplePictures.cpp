#include <string>

#include "tests/support/Digest.h"
#include "tests/support/SampleFolder.h"

namespace salvor {
namespace {

using std::string_literals::operator""s;

/// A file of the camera roll and whether a scan copies it.
struct SamplePicture {
    const char* path;
    std::string head;
    const char* table;  ///< "Photos", "Videos" or "" for what is not listed
};

const SamplePicture kPictures[] = {
    {"Media/DCIM/100APPLE/IMG_0001.JPG", "\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1"s, "Photos"},
    {"Media/DCIM/100APPLE/IMG_0002.JPG",
     "\xFF\xD8\xFF\xE1\0\x10"
     "Exif\0\0"s,
     ""},
    {"Media/DCIM/100APPLE/IMG_0003.PNG", "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s, "Photos"},
    {"Media/DCIM/100APPLE/IMG_0004.MOV",
     "\0\0\0\x14"
     "ftypqt  "s,
     "Videos"},
    {"Media/DCIM/100APPLE/IMG_0005.MOV",
     "\0\0\0\x14"
     "ftypmp42"s,
     ""},
    {"Media/PhotoData/Thumbnails/5003.JPG", "\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\2"s, "Photos"},
};

}  // namespace

// Heads with noise behind them: enough for a program that only looks at the first bytes.
void writeSamplePictures(SampleFolder& folder) {
    constexpr const char* kDomain = "CameraRollDomain";
    for (const auto& picture : kPictures) {
        writeWholeFile(folder.add(kDomain, picture.path),
                       picture.head + folder.random().digits(2000));
        if (*picture.table == '\0') continue;
        TruthRow row;
        row.database = sampleStoredName(kDomain, picture.path);
        row.table = picture.table;
        row.text = picture.path;
        folder.truth().live.push_back(std::move(row));
    }
}

}  // namespace salvor
