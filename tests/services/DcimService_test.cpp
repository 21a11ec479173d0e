#include "services/DcimService.h"

#include "scan/StoredNames.h"
#include "tests/support/ScanFixture.h"
#include "tests/support/Told.h"
#include "tools/sample/PhotoLibraryFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr auto kNewer = PhotosSqliteDbName;
constexpr auto kOlder = PhotosSqliteDbNameIOS456;

class CameraRoll : public ScanFixture, public ScanObserver {
  protected:
    CameraRoll() {
        fs::create_directories(backup);
        useBackup(state, backup);
        state.observer = this;
        state.RecoverType = 1;
        device.BackupLocation = backup.string();
        device.UniqueDeviceID = "abcd";
    }
    void onRecoveredData() override { ++refreshed; }

    static void library(const fs::path& where, const char* storedName, int layoutCode,
                        const std::vector<SampleAsset>& assets) {
        fs::create_directories(where);
        writePhotoLibrary(where / storedName, layoutCode, assets);
    }
    void run() { service.RecoverFromIOSBackup(device); }

    /// "folder: names" of the folders that hold anything; "!" marks a folder with deleted assets.
    Texts filed() const {
        Texts texts;
        for (const auto& one : service.folders()) {
            if (one.assets.empty()) continue;
            std::string text = one.name + (one.IsVideosFolder ? " (videos)" : "") +
                               (one.ContainsDeleted ? "!:" : ":");
            for (const auto& asset : one.assets) text += " " + asset->DcmiName;
            texts.push_back(std::move(text));
        }
        return texts;
    }

    const fs::path backup = folder / "abcd";
    DeviceInfo device;
    DcimService service{state};
    int refreshed = 0;
};

TEST_F(CameraRoll, HasItsFoldersBeforeAnythingIsRead) {
    std::vector<std::pair<std::string, bool>> folders;
    for (const auto& one : service.folders()) folders.emplace_back(one.name, one.IsVideosFolder);
    EXPECT_THAT(folders,
                ElementsAre(std::pair("Camera Roll", false), std::pair("Photo Stream", false),
                            std::pair("App Photos", false), std::pair("Camera Roll", true),
                            std::pair("Photo Stream Videos", true), std::pair("App Videos", true)));
}

TEST_F(CameraRoll, ListsAndFilesEveryAsset) {
    library(backup, kNewer, 5,
            {{"DCIM/100APPLE", "live.JPG"},
             {"DCIM/100APPLE", "trashed.JPG", true},
             {"PhotoStreamsData/1", "stream.JPG", true},
             {"PhotoData/Sync/1", "sync.JPG"},
             {"Other", "other.PNG"},
             {"DCIM/100APPLE", "film.MOV"},
             {"PhotoStreamsData/1", "stream.MOV"},
             {"Other", "other.mp4"}});
    run();
    EXPECT_THAT(textsOf(state.Photos, &Photo::Name), ElementsAre("live.JPG", "stream.JPG"));
    EXPECT_THAT(textsOf(state.DeletedPhotos, &Photo::Name),
                ElementsAre("trashed.JPG", "sync.JPG", "other.PNG"));
    EXPECT_THAT(textsOf(state.Videos, &Video::Name), IsEmpty()) << "no video is live";
    EXPECT_THAT(textsOf(state.DeletedVideos, &Video::Name),
                ElementsAre("film.MOV", "stream.MOV", "other.mp4"));
    EXPECT_EQ(state.PhotosCount, 2);
    EXPECT_EQ(state.DeletedPhotosCount, 3);
    EXPECT_EQ(state.VideosCount, 0);
    EXPECT_EQ(state.DeletedVideosCount, 3);
    EXPECT_EQ(state.Photos[0]->Location,
              (backup / sampleDigest("CameraRollDomain-Media/DCIM/100APPLE/live.JPG")).string());
    EXPECT_EQ(state.Photos[0]->isChecked, 1);
    EXPECT_THAT(state.DeletedVideos[0]->Image.value_or(""), testing::EndsWith("thumbnail.png"));
    // A deleted mark of the library alone does not mark the folder.
    EXPECT_THAT(filed(), ElementsAre("Camera Roll: live.JPG trashed.JPG",
                                     "Photo Stream: stream.JPG sync.JPG other.PNG",
                                     "Camera Roll (videos): film.MOV",
                                     "Photo Stream Videos (videos): stream.MOV other.mp4"));
    EXPECT_EQ(service.retrieved(), 8);
    EXPECT_EQ(refreshed, 1);
    EXPECT_FALSE(state.photosLocked);
    EXPECT_FALSE(state.dcimLocked);
}

TEST_F(CameraRoll, ReadsBothLibrariesAndListsAPhotoOnce) {
    library(backup, kNewer, 3, {{"DCIM", "a.JPG"}, {"DCIM", "b.JPG"}, {"DCIM", "c.MOV"}});
    library(backup, kOlder, 1, {{"DCIM", "b.JPG"}, {"DCIM", "c.MOV"}, {"DCIM", "d.JPG"}});
    run();
    EXPECT_THAT(textsOf(state.Photos, &Photo::Name), ElementsAre("a.JPG", "b.JPG", "d.JPG"));
    EXPECT_EQ(state.PhotosCount, 3);
    // Kept: photos-alone-compared.
    EXPECT_THAT(textsOf(state.DeletedVideos, &Video::Name), ElementsAre("c.MOV", "c.MOV"));
    EXPECT_EQ(state.DeletedVideosCount, 2);
    EXPECT_THAT(filed(),
                ElementsAre("Camera Roll: a.JPG b.JPG d.JPG", "Camera Roll (videos): c.MOV"));
    EXPECT_EQ(refreshed, 2);
}

// A device without a backup location of its own lies in the backup folder.
TEST_F(CameraRoll, AddsToWhatThePictureSweepListed) {
    device.BackupLocation.reset();
    const auto place = (backup / sampleDigest("MediaDomain-Media/DCIM/a.JPG")).string();
    state.Photos.push_back(std::make_shared<Photo>(Photo{"IMG_1.JPG", place, 1}));
    state.PhotosCount = 1;
    library(backup, kOlder, 0, {{"DCIM", "a.JPG"}});
    run();
    EXPECT_THAT(toldAll(state.Photos),
                ElementsAre("Name=IMG_1.JPG|Location=" + place, "Name=a.JPG|Location=" + place));
    EXPECT_EQ(state.PhotosCount, 2);
}

TEST_F(CameraRoll, IsEmptyWithoutAUsableLibrary) {
    run();
    EXPECT_EQ(refreshed, 0) << "nothing opened";
    writeWholeFile(backup / kNewer, std::string(5000, 'x'));
    writeWholeFile(backup / kOlder, "");
    run();
    writePhotoLibrary(backup / kNewer, 5, std::vector<SampleAsset>(200, {"DCIM", "a.JPG"}));
    fs::resize_file(backup / kNewer, 700);
    run();
    EXPECT_THAT(state.Photos, IsEmpty());
    EXPECT_THAT(state.DeletedPhotos, IsEmpty());
    EXPECT_THAT(filed(), IsEmpty());
}

class OlderBackups : public CameraRoll {
  protected:
    OlderBackups() {
        state.RecoverType = 0;
        library(backup, kNewer, 1, {{"DCIM", "now.JPG"}});
        library(backup / "abcd-inside", kNewer, 1, {{"DCIM", "inside.JPG"}});
        library(folder / "abcd-1", kOlder, 0, {{"DCIM", "beside.JPG"}, {"DCIM", "film.MOV"}});
        library(folder / "xabcd", kNewer, 1, {{"DCIM", "foreign.JPG"}});
    }
};

TEST_F(OlderBackups, OfTheDeviceGiveDeletedPicturesAfterAFreshBackup) {
    // What cannot be read in one of them does not end the walk.
    fs::create_directories(folder / "abcd-0" / kNewer);
    run();
    EXPECT_THAT(textsOf(state.Photos, &Photo::Name), ElementsAre("now.JPG"));
    EXPECT_THAT(textsOf(state.DeletedPhotos, &Photo::Name),
                UnorderedElementsAre("inside.JPG", "beside.JPG"));
    EXPECT_THAT(textsOf(state.DeletedVideos, &Video::Name), ElementsAre("film.MOV"));
    EXPECT_EQ(state.DeletedPhotosCount, 2);
    EXPECT_EQ(state.DeletedPhotos[1]->Location,
              (folder / "abcd-1" / sampleDigest("MediaDomain-Media/DCIM/beside.JPG")).string());
    EXPECT_THAT(filed(), ElementsAre("Camera Roll!: now.JPG inside.JPG beside.JPG",
                                     "Camera Roll (videos)!: film.MOV"));
    EXPECT_TRUE(service.folders()[0].assets[1]->Recovered);
    EXPECT_FALSE(service.folders()[0].assets[0]->Recovered);
}

TEST_F(OlderBackups, AreLeftAloneInOtherScansAndWithoutAnIdentifierAndOnceCancelled) {
    state.RecoverType = 1;
    run();
    EXPECT_THAT(textsOf(state.Photos, &Photo::Name), ElementsAre("now.JPG"));
    EXPECT_THAT(state.DeletedPhotos, IsEmpty());
    state.RecoverType = 0;
    device.UniqueDeviceID = "";
    run();
    EXPECT_THAT(state.DeletedPhotos, IsEmpty());
    device.UniqueDeviceID = "abcd";
    std::stop_source stop;
    service.setStopToken(stop.get_token());
    stop.request_stop();
    run();
    EXPECT_THAT(state.DeletedPhotos, IsEmpty());
}

TEST_F(OlderBackups, ThatThrowAreToldAndPassedOver) {
    // The view throws at the first older backup, as a lack of memory would.
    class Failing : public ScanObserver {
      public:
        int calls = 0;
        std::vector<std::string> warnings;
        void onRecoveredData() override {
            if (++calls == 2) throw std::runtime_error("no memory");
        }
        void onWarning(const std::string& text) override { warnings.push_back(text); }
    } failing;
    state.observer = &failing;
    writeWholeFile(folder / "abcd-1" / kNewer, "no library");
    run();
    EXPECT_THAT(textsOf(state.DeletedPhotos, &Photo::Name),
                ElementsAre("inside.JPG", "beside.JPG"));
    using testing::EndsWith;
    EXPECT_THAT(failing.warnings, Contains(EndsWith("abcd-inside: no memory")));
    EXPECT_THAT(failing.warnings, Contains(EndsWith("abcd-1: the photo library: file is not a "
                                                    "database")));
}

}  // namespace
}  // namespace salvor
