#include "app/Sources.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/Outputs.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;

TEST(Sources, AreDescribedAsFarAsTheirPropertyListsGo) {
    const TempFolder folder;
    const auto expect = [&](bool isBackup, const char* fault, const char* encrypted) {
        const auto described = describeBackup(folder.path());
        EXPECT_EQ(described.isBackup, isBackup);
        EXPECT_THAT(described.fault, EndsWith(fault));
        const auto encryption = encryptionOf(folder.path(), described.info.device);
        EXPECT_STREQ(encryptionText(encryption), encrypted);
    };
    expect(false, ": is no backup folder: it holds no Info.plist and no Manifest.plist", "unknown");
    PropertyListDictionary info;
    info.text("Device Name", "Phone").text("Product Version", "").writeXml(folder / "Info.plist");
    expect(true, "is missing, unreadable or names no version", "unknown");
    info.text("Product Version", "7.1").writeXml(folder / "Info.plist");
    expect(true, "", "unknown");
    for (const bool encrypted : {false, true}) {
        PropertyListDictionary manifest;
        manifest.boolean("IsEncrypted", encrypted).writeXml(folder / "Manifest.plist");
        expect(true, "", encrypted ? "yes" : "no");
    }
}

TEST(Sources, ThatAreOfNoUseSayWhy) {
    const TempFolder folder;
    writeWholeFile(folder / "file", "");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(whyNoFile(folder / "pipe"), EndsWith("pipe: is not a regular file"));
    EXPECT_EQ(whyNoFile(folder / "file"), "");
    EXPECT_EQ(findBackupFolder(folder.path()).fault, "");
    if (::geteuid() == 0) return;  // to whom every folder is open
    fs::create_directory(folder / "closed");
    fs::permissions(folder / "closed", fs::perms::none);
    for (const auto& text :
         {findBackupFolder(folder / "closed").fault, findIndexFile(folder / "closed").fault})
        EXPECT_THAT(text, EndsWith("closed: the folder cannot be read"));
    EXPECT_THAT(whyNoRoom(folder / "closed/new", OutputKind::Folder), EndsWith("denied"));
}

}  // namespace
}  // namespace salvor
