#include "backup/extraction/PictureSweep.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <vector>

#include "backup/BackupSource.h"
#include "scan/StoredNames.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string kJfif = "\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1rest of it"s;
const std::string kExif =
    "\xFF\xD8\xFF\xE1\0\x10"
    "Exif\0\0rest of it"s;
const std::string kPng = "\x89PNG\r\n\x1a\n rest of it";
const std::string kMovie =
    "\0\0\0\x14"
    "ftypqt  rest of it"s;

TEST(PictureKindTest, IsDecidedByTheFirstMarkThatFits) {
    const struct {
        const char* what;
        std::string head;
        PictureKind kind;
    } cases[] = {
        {"JFIF", kJfif, PictureKind::Jpeg},
        {"JFIF without its zero", "\xFF\xD8\xFF\xE0\0\x10JFIFx"s, PictureKind::Other},
        {"JFIF cut off", "\xFF\xD8\xFF\xE0\0\x10JFIF"s, PictureKind::Other},
        {"whatever stands before JFIF", "abcdefJFIF\0"s, PictureKind::Jpeg},
        {"Exif", kExif, PictureKind::ExifJpeg},
        {"Exif with one zero", "abcdefExif\0x"s, PictureKind::Other},
        {"PNG", kPng, PictureKind::Png},
        {"PNG at its end", "xPNG", PictureKind::Png},
        {"PNG and JFIF", "xPNGxxJFIF\0"s, PictureKind::Jpeg},
        {"film", kMovie, PictureKind::QuickTime},
        {"other film",
         "\0\0\0\x14"
         "ftypmp42"s,
         PictureKind::Other},
        {"database", "SQLite format 3\0"s, PictureKind::Database},
        {"nothing", "", PictureKind::Other},
    };
    for (const auto& c : cases) {
        const std::vector<std::uint8_t> head(c.head.begin(), c.head.end());
        EXPECT_EQ(pictureKind(head), c.kind) << c.what;
    }
}

class Sweeps : public testing::Test {
  protected:
    void store(const std::string& name, const std::string& content) const {
        fs::create_directories((backup / name).parent_path());
        writeWholeFile(backup / name, content);
    }
    std::string sweep(const std::stop_token& cancelled = {}) {
        useBackup(state, backup);
        return sweepPictures(state, copies ? &work : nullptr, cancelled);
    }
    template <class List>
    static std::vector<std::string> namesOf(const List& list) {
        std::vector<std::string> names;
        for (const auto& item : list) names.push_back(item->Name.value_or("absent"));
        return names;
    }

    TempFolder folder;
    fs::path backup = folder / "backup";
    ScanState state;
    WorkFolder work{folder / "work"};
    bool copies = true;
};

TEST_F(Sweeps, CopiesPicturesAndFilmsByNameOfTheirStoredFiles) {
    store("d4", kPng);
    store("c3", kMovie);
    store("b2", kJfif);
    store("a1", kExif);
    store("e5", "SQLite format 3");
    store("f6", "");
    store("7a/7a99", kJfif + "nested");
    store("not-a-store/x", kPng);
    store("g7", kMovie + "second");
    fs::create_symlink(backup / "d4", backup / "h8");
    ASSERT_EQ(::mkfifo((backup / "i9").c_str(), 0600), 0);
    const auto before = hashTree(backup);
    struct View : ScanObserver {
        const ScanState& state;
        std::vector<int> counters;
        explicit View(const ScanState& drawn) : state(drawn) {}
        void onMainView(salvor::View) override {
            counters.assign({state.PhotosCount.load(), state.VideosCount.load()});
        }
    } view(state);
    state.observer = &view;

    EXPECT_EQ(sweep(), "");

    EXPECT_THAT(view.counters, ElementsAre(4, 3)) << "they go down once the view is drawn";

    EXPECT_THAT(namesOf(state.Photos), ElementsAre("IMG_1.JPG", "IMG_2.JPG", "IMG_3.PNG"));
    EXPECT_THAT(namesOf(state.Videos), ElementsAre("MOV_1.MOV", "MOV_2.MOV"));
    EXPECT_EQ(state.PhotosCount, 3);
    EXPECT_EQ(state.VideosCount, 2);
    EXPECT_EQ(readWholeFile(state.Photos[0]->Location.value()), kJfif + "nested");
    EXPECT_EQ(readWholeFile(state.Photos[2]->Location.value()), kPng);
    EXPECT_EQ(readWholeFile(state.Videos[1]->Location.value()), kMovie + "second");
    EXPECT_EQ(state.Photos[0]->Location, (work.photos() / "IMG_1.JPG").string());
    EXPECT_EQ(state.Videos[0]->Image, "video-thumbnail");
    EXPECT_EQ(state.Photos[0]->isChecked, 1);
    EXPECT_FALSE(state.photosLocked);
    EXPECT_FALSE(state.dcimLocked);
    EXPECT_EQ(state.statusHistory().back().second, "Photos & Videos... ");
    EXPECT_EQ(hashTree(backup), before);

    // Without copies the same is listed where it lies.
    copies = false;
    fs::remove_all(folder / "work");
    EXPECT_EQ(sweep(), "");
    EXPECT_THAT(namesOf(state.Photos), ElementsAre("IMG_1.JPG", "IMG_2.JPG", "IMG_3.PNG"));
    EXPECT_THAT(namesOf(state.Videos), ElementsAre("MOV_1.MOV", "MOV_2.MOV"));
    EXPECT_EQ(state.Photos[0]->Location, (backup / "7a/7a99").string());
    EXPECT_EQ(state.Videos[1]->Location, (backup / "g7").string());
    EXPECT_FALSE(fs::exists(folder / "work"));
    EXPECT_EQ(hashTree(backup), before);

    // A second sweep begins afresh.
    copies = true;
    fs::remove(backup / "b2");
    state.DeletedPhotos.push_back(std::make_shared<Photo>());
    state.DeletedVideos.push_back(std::make_shared<Video>());
    state.DeletedPhotosCount = state.DeletedVideosCount = 1;
    EXPECT_EQ(sweep(), "");
    EXPECT_THAT(namesOf(state.Photos), ElementsAre("IMG_1.JPG", "IMG_2.PNG"));
    EXPECT_THAT(state.DeletedPhotos, IsEmpty());
    EXPECT_THAT(state.DeletedVideos, IsEmpty());
    EXPECT_EQ(state.DeletedPhotosCount + state.DeletedVideosCount, 0);
}

TEST_F(Sweeps, AdvancesByEighthsOfTheStoredFiles) {
    // A step after every second one, of which the ninth is none.
    for (int i = 0; i < 23; ++i) store("file" + std::to_string(i), "x");
    sweep();
    EXPECT_EQ(state.progress.pictureSteps, 8U);
    // Fewer than eight: no step at all.
    for (int i = 5; i < 23; ++i) fs::remove(backup / ("file" + std::to_string(i)));
    sweep();
    EXPECT_EQ(state.progress.pictureSteps, 0U);
}

TEST_F(Sweeps, AreCancelled) {
    store("a", kPng);
    state.IsCancelFlag = true;
    EXPECT_EQ(sweep(), "");
    EXPECT_THAT(state.Photos, IsEmpty());
    EXPECT_EQ(state.PhotosCount, 0);
    state.IsCancelFlag = false;
    std::stop_source stop;
    stop.request_stop();
    sweep(stop.get_token());
    EXPECT_THAT(state.Photos, IsEmpty());
    EXPECT_TRUE(fs::is_empty(work.photos()));
}

TEST_F(Sweeps, TellOnceOfCopiesThatCannotBeWritten) {
    // The work folder goes while the status is shown, before anything is copied.
    struct Saboteur : ScanObserver {
        fs::path target;
        std::vector<std::string> heard;
        void onStatus(StatusCode, const std::string&) override { fs::remove_all(target); }
        void onError(const std::string& text) override { heard.push_back(text); }
    } observer;
    state.observer = &observer;
    store("a", kPng);
    store("b", kJfif);
    store("c", kMovie);
    observer.target = work.path() / "Photos";
    EXPECT_EQ(sweep(), "");
    EXPECT_THAT(state.Photos, IsEmpty());
    EXPECT_EQ(state.PhotosCount, 0);
    EXPECT_THAT(namesOf(state.Videos), ElementsAre("MOV_1.MOV"));
    EXPECT_THAT(observer.heard,
                ElementsAre(AllOf(StartsWith("pictures and videos that could not be copied: 2, "),
                                  HasSubstr("No such file or directory"))));
    EXPECT_EQ(state.picturesNotCopied, 2U);
}

TEST_F(Sweeps, RefuseToCopyWhatHasNoRoomAndCopyNothing) {
    store("a", kPng);
    store("b", kMovie);
    fs::resize_file(backup / "b", std::uintmax_t{1} << 43);  // a hole, which takes no space
    EXPECT_THAT(sweep(), AllOf(StartsWith(work.path().string()), HasSubstr(" needs 8.8 TB ("),
                               HasSubstr(", but there are ")));
    EXPECT_TRUE(fs::is_empty(work.photos()));
    copies = false;
    EXPECT_EQ(sweep(), "");
    EXPECT_EQ(state.Videos.size(), 1U);
}

/// Files of which the first byte of one cannot be read.
class OneUnreadable : public BackupFiles {
  public:
    explicit OneUnreadable(std::string name) : name_(std::move(name)) {}
    FileFacts find(const std::string&) const override { return {}; }
    BackupFile open(const std::string&) const override { return {}; }
    BackupFile own(const std::string&) const override { return {}; }
    std::optional<std::string> storedNameAt(const fs::path&) const override { return {}; }
    std::uint64_t totalBytes() const override { return 0; }
    std::unique_ptr<StoredFileList> list() const override {
        class Files : public StoredFileList {
          public:
            explicit Files(std::string name) : name_(std::move(name)) {}
            std::size_t size() const override { return 1; }
            fs::path place(std::size_t) const override { return name_; }
            std::uint64_t fileSize(std::size_t) const override { return 0; }
            FileHead readHead(std::size_t, std::span<std::uint8_t>) const override {
                return {0, "Input/output error"};
            }
            FileCopy copyTo(std::size_t, const fs::path&, const FileCopyOptions&) const override {
                return {FileCopy::End::Unreadable, ""};
            }
            bool sharesBlocks(std::size_t, const fs::path&) const override { return false; }

          private:
            std::string name_;
        };
        return std::make_unique<Files>(name_);
    }

  private:
    std::string name_;
};

TEST_F(Sweeps, TellOfFilesThatCannotBeReadUnlessTheyAreKnownToBeSomethingElse) {
    const std::pair<std::string, bool> cases[] = {
        {std::string(40, 'a'), true}, {MessagesSqliteDbName, false}, {"Info.plist", false}};
    for (const auto& [name, fault] : cases) {
        ScanState one;
        one.setBackupFiles(std::make_shared<OneUnreadable>(name));
        one.beginFiles(codeOf(Category::Photos));
        EXPECT_EQ(sweepPictures(one, nullptr), "");
        EXPECT_EQ(one.fileOutcomes.anyFault(), fault) << name;
    }
}

}  // namespace
}  // namespace salvor
