#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "backup/BackupSource.h"
#include "scan/BackupDatabase.h"
#include "tests/support/CopiedFiles.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/MbdbWriter.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

class FilesOfABackup : public testing::Test {
  protected:
    void store(const std::string& path, const std::string& content) const {
        fs::create_directories((folder / path).parent_path());
        writeWholeFile(folder / path, content);
    }

    const TempFolder folder;
    const std::shared_ptr<const BackupFiles> files = openBackup(folder.path());
};

TEST_F(FilesOfABackup, AreFoundFlatElseInTheirSubFolderElseWithTheCause) {
    store("abc1", "flat");
    store("ab/abc1", "hidden by the flat one");
    store("ab/abc2", "nested");
    store("abc3/x", "");
    store("ab/abc3", "behind a folder");
    store("abc4/x", "");
    store("abc", "in the way of a folder");
    fs::create_symlink("abc1", folder / "abc5");
    fs::create_symlink("loop", folder / "loop");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        const char* name;
        const char* place;
        FileState state;
        std::uint64_t size;
    } cases[] = {{"abc1", "abc1", FileState::Present, 4},
                 {"abc2", "ab/abc2", FileState::Present, 6},
                 {"abc3", "ab/abc3", FileState::Present, 15},
                 {"abc4", "abc4", FileState::NotAFile, 0},
                 {"abc5", "abc5", FileState::Present, 4},
                 {"pipe", "pipe", FileState::NotAFile, 0},
                 {"loop", "loop", FileState::Unreadable, 0},
                 {"abc6", "abc6", FileState::Absent, 0},
                 {"a", "a", FileState::Absent, 0},
                 {"", "", FileState::Absent, 0}};
    for (const auto& [name, place, state, size] : cases) {
        const auto facts = files->find(name);
        EXPECT_EQ(facts.state, state) << name;
        EXPECT_EQ(facts.place, folder / place) << name;
        EXPECT_EQ(facts ? facts.size : 0, size) << name;
        const auto file = files->open(name);
        EXPECT_EQ(file.state, state) << name;
        EXPECT_EQ(file.path, facts.place) << name;
        // The place leads back to the file.
        EXPECT_EQ(files->storedNameAt(facts.place).value_or(""), name);
    }
    for (const char* foreign : {"other/abc1", "x/ab/abc1", "ac/abc1", "ab/abc1", ""})
        EXPECT_EQ(files->storedNameAt(folder / foreign), std::nullopt) << foreign;
    EXPECT_EQ(files->find("HomeDomain", "a").place, folder / sampleStoredName("HomeDomain", "a"));
    EXPECT_EQ(files->open("HomeDomain", "a").path, folder / sampleStoredName("HomeDomain", "a"));
    const timespec times[] = {{1, 0}, {1'234'567'890, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "abc1").c_str(), times, 0), 0);
    EXPECT_EQ(files->find("abc1").modified, 1'234'567'890);
}

TEST_F(FilesOfABackup, HaveTheDatesOfTheIndexElseTheirOwn) {
    const auto name = sampleStoredName("CameraRollDomain", "Media/DCIM/a.JPG");
    const auto undated = sampleStoredName("CameraRollDomain", "Media/DCIM/b.JPG");
    MbdbRecord record;
    record.domain = "CameraRollDomain";
    record.path = "Media/DCIM/a.JPG";
    record.modified = 0xF0000001;
    auto without = record;
    without.path = "Media/DCIM/b.JPG";
    without.modified = 0;
    store("Manifest.mbdb", mbdbBytes({without, record}));
    ScanState state;
    useBackup(state, folder.path());
    const timespec times[] = {{1, 0}, {1'234'567'890, 5}};
    for (const auto& [file, date] : {std::pair(name, std::int64_t{0xF0000001}),
                                     {undated, 1'234'567'890},
                                     {"other", 1'234'567'890}}) {
        store(file, "x");
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / file).c_str(), times, 0), 0);
        EXPECT_EQ(state.findListed(folder / file).modified, date) << file;
    }
}

TEST_F(FilesOfABackup, OfItsOwnAreFoundWhateverTheirCase) {
    store("info.PLIST", "x");
    store("Manifest.plist/x", "");
    EXPECT_EQ(files->own("Info.plist").path, folder / "info.PLIST");
    EXPECT_EQ(files->own("Manifest.plist").state, FileState::NotAFile);
    EXPECT_EQ(files->own("Status.plist").state, FileState::Absent);
}

TEST_F(FilesOfABackup, StayAsLongAsTheyAreHeld) {
    ScanState state;
    EXPECT_FALSE(state.backupFiles()->open("abc")) << "no source is chosen";
    EXPECT_EQ(state.openListed("/encrypted/abc").state, FileState::Absent);
    state.addOtherBackup(std::make_shared<CopiedFiles>(folder.path()));
    {
        const auto file = state.openListed("/encrypted/abc");
        EXPECT_EQ(readWholeFile(file.path), "decrypted abc");
        const auto database = backupDatabase(state, state.openListed("/encrypted/db"));
        EXPECT_TRUE(database->openDatabase());
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
    // What a list names outside of every backup is opened where it lies.
    store("copy", "x");
    EXPECT_EQ(state.openListed(folder / "copy").path, folder / "copy");
    EXPECT_TRUE(state.openListed(folder / "copy"));
    state.setBackupFiles(files);
    EXPECT_EQ(state.openListed("/encrypted/abc").state, FileState::Absent) << "of another source";
}

}  // namespace
}  // namespace salvor
