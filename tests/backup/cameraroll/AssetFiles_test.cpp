#include "backup/cameraroll/AssetFiles.h"

#include <gtest/gtest.h>

#include "backup/BackupSource.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using Layout = PhotoLibraryLayout;

constexpr auto kVideoPicture = "/Salvor.DcmiModule;component/Resources/video-thumbnail.png";

class Assets : public testing::Test {
  protected:
    /// Where a backup stores what lies at "domain-path".
    std::string stored(const std::string& location) const {
        return (folder / sampleDigest(location)).string();
    }
    void store(const std::string& location) const { writeWholeFile(stored(location), "x"); }
    Dcmi locate(Layout layout, const std::string& directory, const std::string& file, bool video,
                bool trashed = false) const {
        Dcmi asset;
        asset.ZDirecotry = directory;
        asset.ZFilename = file;
        asset.Recovered = trashed;
        AssetFiles(openBackup(folder.path()), layout).locate(asset, video);
        return asset;
    }
    std::string thumbnail(Layout layout, const std::string& directory, const std::string& file,
                          bool video = false) const {
        return locate(layout, directory, file, video).DcmiThumbnailPath;
    }

    TempFolder folder;
};

TEST_F(Assets, HaveTheirPlaceAndMarkByDirectoryAndKind) {
    const std::string media = "MediaDomain-Media/";
    const std::string roll = "CameraRollDomain-Media/";
    const struct {
        Layout layout;
        const char* directory;
        bool video;
        bool trashed;
        std::string prefix;
        bool deleted;
    } cases[] = {
        {Layout::Photo, "DCIM/100APPLE", false, false, media, false},
        {Layout::Z8, "DCIM/100APPLE", false, false, roll, false},
        // Only photos of the camera roll keep what the library says.
        {Layout::Plain, "DCIM/100APPLE", false, true, roll, true},
        {Layout::Plain, "DCIM/100APPLE", false, false, roll, false},
        // Every video counts as deleted, wherever it lies.
        {Layout::Plain, "DCIM/100APPLE", true, false, roll, true},
        {Layout::Photo, "DCIM/100APPLE", true, false, media, true},
        {Layout::Z16, "PhotoStreamsData/1/100APPLE", true, false, media, true},
        {Layout::Z16, "PhotoData/Sync/100SYNCD", true, false, roll, true},
        {Layout::Z16, "Elsewhere", true, false, roll, true},
        // The photo stream is live even where the library says trashed.
        {Layout::Z16, "PhotoStreamsData/1/100APPLE", false, true, media, false},
        {Layout::Photo, "PhotoStreamsData/1/100APPLE", false, false, media, false},
        // Synchronised photos and those elsewhere are deleted though nobody deleted them.
        {Layout::Z16, "PhotoData/Sync/100SYNCD", false, false, media, true},
        {Layout::Z11, "PhotoData/Other", false, false, roll, true},
        {Layout::Photo, "", false, false, media, true},
        // The beginning of the directory decides, its letter case included.
        {Layout::Z6, "dcim/100APPLE", false, false, roll, true},
        {Layout::Z6, "DCIMfolder", false, false, roll, false},
        {Layout::Z6, "x/DCIM", false, false, roll, true},
    };
    for (const auto& c : cases) {
        const auto asset = locate(c.layout, c.directory, "IMG_1.JPG", c.video, c.trashed);
        EXPECT_EQ(asset.DcmiPath, stored(c.prefix + c.directory + "/IMG_1.JPG")) << c.directory;
        EXPECT_EQ(asset.Recovered, c.deleted) << c.directory << (c.video ? " video" : " photo");
    }
}

TEST_F(Assets, TakeTheFirstThumbnailThatIsStored) {
    const std::string base =
        "CameraRollDomain-Media/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG.1.JPG/";
    const std::string last = "CameraRollDomain-Media/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG.THM";
    const auto shown = [&] { return thumbnail(Layout::Plain, "DCIM/100APPLE", "IMG.1.JPG"); };
    EXPECT_EQ(shown(), stored("CameraRollDomain-Media/DCIM/100APPLE/IMG.1.JPG"));
    store(last);
    EXPECT_EQ(shown(), stored(last));
    for (const char* size : {"5002.JPG", "5005.JPG", "5004.JPG"}) {
        store(base + size);
        EXPECT_EQ(shown(), stored(base + size));
    }
    // The first candidate alone is told by its location, not by its path.
    store(base + "5003.JPG");
    EXPECT_EQ(shown(), base + "5003.JPG");
}

TEST_F(Assets, HaveTheirThumbnailsInTheFolderOfTheLayout) {
    const struct {
        Layout layout;
        const char* folder;
    } cases[] = {{Layout::Photo, "MediaDomain-Media/PhotoData/100APPLE/"},
                 {Layout::Z8, "CameraRollDomain-Media/PhotoData/100APPLE/"},
                 {Layout::Z11, "CameraRollDomain-Media/PhotoData/100APPLE/"},
                 {Layout::Z6, "CameraRollDomain-Media/PhotoData/100APPLE/"},
                 {Layout::Z16, "CameraRollDomain-Media/PhotoData/Thumbnails/V2/"},
                 {Layout::Plain, "CameraRollDomain-Media/PhotoData/Thumbnails/V2/"}};
    for (const auto& c : cases) {
        const std::string file = "IMG_" + std::to_string(static_cast<int>(c.layout)) + ".MOV";
        EXPECT_EQ(thumbnail(c.layout, "DCIM/100APPLE", file, true), kVideoPicture);
        const std::string location = c.folder + ("DCIM/100APPLE/" + file) + "/5005.JPG";
        store(location);
        EXPECT_EQ(thumbnail(c.layout, "DCIM/100APPLE", file, true), stored(location)) << c.folder;
    }
}

TEST_F(Assets, OfTheOldLayoutThatAreSynchronisedLookForThumbnailsTwice) {
    const std::string location = "CameraRollDomain-Media/PhotoData/Sync/1/a.JPG/5004.JPG";
    store(location);
    EXPECT_EQ(thumbnail(Layout::Photo, "PhotoData/Sync/1", "a.JPG"), stored(location));
    // No other layout, directory or kind does.
    EXPECT_EQ(thumbnail(Layout::Z8, "PhotoData/Sync/1", "a.JPG"),
              stored("MediaDomain-Media/PhotoData/Sync/1/a.JPG"));
    store("CameraRollDomain-Media/DCIM/a.JPG/5004.JPG");
    EXPECT_EQ(thumbnail(Layout::Photo, "DCIM", "a.JPG"), stored("MediaDomain-Media/DCIM/a.JPG"));
    store("CameraRollDomain-Media/PhotoData/Sync/1/b.MOV/5004.JPG");
    EXPECT_EQ(thumbnail(Layout::Photo, "PhotoData/Sync/1", "b.MOV", true), kVideoPicture);
    // The first search goes before the second.
    const std::string first = "MediaDomain-Media/PhotoData/100APPLE/PhotoData/Sync/1/a.THM";
    store(first);
    EXPECT_EQ(thumbnail(Layout::Photo, "PhotoData/Sync/1", "a.JPG"), stored(first));
}

}  // namespace
}  // namespace salvor
