#include "backup/BackupStore.h"

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>

#include "backup/extraction/WorkFolder.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

void makeBackup(const fs::path& folder, const char* deviceName) {
    fs::create_directories(folder);
    PropertyListDictionary info;
    info.text("Device Name", deviceName).text("Product Version", "7.0");
    info.writeXml(folder / "Info.plist");
}

TEST(BackupStore, ListsTheBackupsBelowARoot) {
    const TempFolder root;
    makeBackup(root / "bbb", "Second");
    makeBackup(root / "aaa", "First");
    writeWholeFile(root / "aaa/payload", std::string(5000, 'x'));
    fs::create_directories(root / "no-backup/deeper");
    writeWholeFile(root / "Manifest.txt", "");
    const auto found = BackupStore::listBackups(root.path());
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].path, root / "aaa");
    EXPECT_EQ(found[0].device.DeviceName, Text("First"));
    EXPECT_GT(found[0].sizeInBytes, 5000u);
    EXPECT_GT(found[0].lastModified, 1'500'000'000);
    EXPECT_EQ(found[1].device.DeviceName, Text("Second"));

    EXPECT_EQ(BackupStore::listBackups(root / "bbb").size(), 1u) << "a backup as its own root";
    EXPECT_TRUE(BackupStore::listBackups(root / "missing").empty());
}

TEST(BackupStore, TakesAFolderOrAPropertyListInOne) {
    const TempFolder root;
    makeBackup(root.path(), "x");
    for (const char* name : {"Status.plist", "odd.PLIST", "notes.txt"}) {
        writeWholeFile(root / name, "");
    }
    EXPECT_EQ(BackupStore::resolve(root.path()), root.path());
    for (const char* name : {"Status.plist", "odd.PLIST"}) {
        EXPECT_EQ(BackupStore::resolve(root / name), root.path()) << name;
    }
    for (const char* name : {"notes.txt", "missing.plist", "missing"}) {
        EXPECT_EQ(BackupStore::resolve(root / name), std::nullopt) << name;
    }
    EXPECT_EQ(BackupStore::resolveIndex(root.path()), std::nullopt);
    writeWholeFile(root / "manifest.MBDB", "mbdb");
    EXPECT_EQ(BackupStore::resolveIndex(root.path()), root / "manifest.MBDB");
    EXPECT_EQ(BackupStore::resolveIndex(root / "notes.txt"), root / "notes.txt");
}

TEST(BackupStore, KnowsWhereBackupsUsuallyLie) {
    const std::string home = std::getenv("HOME");
    ::setenv("HOME", "/h", 1);
    ::setenv("APPDATA", "/h/AppData/Roaming", 1);
    ::setenv("USERPROFILE", "/p", 1);
    EXPECT_EQ(BackupStore::standardLocation(), "/h/Library/Application Support/MobileSync/Backup/");
    const std::vector<fs::path> places{BackupStore::standardLocation(),
                                       "/h/AppData/Roaming/Apple Computer/MobileSync/Backup",
                                       "/h/Apple/MobileSync/Backup", "/p/Apple/MobileSync/Backup"};
    EXPECT_EQ(BackupStore::usualLocations(), places);
    ::unsetenv("APPDATA");
    ::unsetenv("USERPROFILE");
    ::setenv("HOME", home.c_str(), 1);
}

class WorkFolders : public testing::Test {
  protected:
    TempFolder root;
    fs::path backup = root / "backup";
    fs::path parent = root / "work";

    void SetUp() override { fs::create_directories(backup); }
};

TEST_F(WorkFolders, AreMadeAfreshByEachScan) {
    for (int scan = 0; scan < 2; ++scan) {
        WorkFolder work(parent);
        EXPECT_EQ(work.recreate(backup), "");
        EXPECT_TRUE(work.made());
        for (const char* name : {"Photos", "Videos", "Extract"}) {
            EXPECT_TRUE(fs::is_directory(parent / "Temp" / name));
        }
        EXPECT_FALSE(fs::exists(parent / "Temp/Photos/IMG_1.PNG"));
        writeWholeFile(parent / "Temp/Photos/IMG_1.PNG", "picture of the last scan");
    }
    EXPECT_TRUE(fs::exists(parent / "Temp/Photos/IMG_1.PNG")) << "the caller's folder stays";
}

TEST_F(WorkFolders, NeverRemoveWhatIsNotTheirs) {
    ASSERT_EQ(WorkFolder(root / "other").recreate(backup), "");
    const fs::path temp = parent / "Temp";
    const std::pair<std::function<void()>, fs::path> cases[] = {
        {[&] { fs::create_directories(temp / "thesis"); }, temp / "thesis"},
        {[&] { fs::create_directory_symlink(root / "other/Temp", temp); },
         root / "other/Temp/Photos"},
        {[&] { writeWholeFile(temp, "a file"); }, temp},
    };
    fs::create_directories(parent);
    for (const auto& [make, kept] : cases) {
        fs::remove_all(temp);
        make();
        WorkFolder foreign(parent);
        EXPECT_NE(foreign.refusal(backup), "");
        EXPECT_NE(foreign.recreate(backup), "");
        EXPECT_FALSE(foreign.made());
        EXPECT_TRUE(fs::exists(kept)) << kept;
    }
}

TEST_F(WorkFolders, StayOutOfTheBackupAndNeverRemoveIt) {
    EXPECT_NE(WorkFolder(backup).recreate(backup), "");
    EXPECT_TRUE(fs::is_empty(backup));
    ASSERT_EQ(WorkFolder(parent).recreate(backup), "");
    fs::create_directories(parent / "Temp/Extract/backup");
    EXPECT_NE(WorkFolder(parent).recreate(parent / "Temp/Extract/backup"), "");
    EXPECT_TRUE(fs::exists(parent / "Temp/Extract/backup"));
}

TEST_F(WorkFolders, PrivateOnesGoWithTheirOwner) {
    ::setenv("XDG_CACHE_HOME", (root / "cache").c_str(), 1);
    fs::path first;
    // What a killed run left goes when the next one is made.
    fs::create_directories(root / "cache/salvor/run-0");
    fs::create_directories(root / "cache/salvor/else");
    {
        WorkFolder one;
        WorkFolder two;
        EXPECT_TRUE(one.path().empty());
        ASSERT_EQ(one.recreate(backup), "");
        ASSERT_EQ(two.recreate(backup), "");
        first = one.path();
        EXPECT_NE(first, two.path());
        EXPECT_TRUE(first.string().starts_with((root / "cache/salvor/run-").string()));
        EXPECT_TRUE(fs::exists(one.photos()));
    }
    ::unsetenv("XDG_CACHE_HOME");
    EXPECT_FALSE(fs::exists(first.parent_path()));
    EXPECT_FALSE(fs::exists(root / "cache/salvor/run-0"));
    EXPECT_TRUE(fs::exists(root / "cache/salvor/else"));
}

}  // namespace
}  // namespace salvor
