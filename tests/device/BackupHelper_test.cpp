#include "device/BackupHelper.h"

#include <gmock/gmock.h>

#include "device/BackupFolderBridge.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

TEST(BackupHelperSetting, IsWordsWithPlaces) {
    const BackupHelper usual;
    EXPECT_THAT(usual.wordsFor("AbC", "/b"),
                ElementsAre("idevicebackup2", "--udid", "AbC", "backup", "/b"));
    const auto own = BackupHelper::parse("  prog\t{target} {udid}  x{udid} {folder} {other}\n");
    ASSERT_TRUE(own);
    EXPECT_THAT(own->wordsFor("{folder}", "/with blank"),
                ElementsAre("prog", "{folder}", "{folder}", "x{udid}", "/with blank", "{other}"));
    EXPECT_THAT(own->wordsFor("AbC", "")[1], "abc");
    for (const char* nothing : {"", "\t\n "})
        EXPECT_FALSE(BackupHelper::parse(nothing)) << '"' << nothing << '"';
}

TEST(BackupHelperEnds, AreRefusalsByStatusAndWords) {
    const struct {
        int status;
        const char* line;
        bool refused;
    } cases[] = {{1, "", true},
                 {48, "", true},
                 {255, "ERROR: Could not connect to lockdownd, error code -17", true},
                 {7, "ErrorCode 208: Device locked (MBErrorDomain/208)", true},
                 {0, "Device locked", false},
                 {255, "ERROR: Could not connect to lockdownd, error code -18", false},
                 {151, "ErrorCode 105: Insufficient free disk space", false}};
    for (const auto& [status, line, refused] : cases) {
        HelperResult result;
        result.exitStatus = status;
        result.usefulLine = line;
        EXPECT_EQ(wasRefused(result), refused) << status << line;
    }
    HelperResult crashed;
    crashed.signal = 11;
    crashed.usefulLine = "Device locked";
    EXPECT_FALSE(wasRefused(crashed));
}

struct FolderCase {
    const char* what;
    std::vector<const char*> files;
    const char* expected;
    const char* udid = "ABCdef";
};

const FolderCase kFolderCases[] = {
    {"none yet", {}, "abcdef"},
    {"in lower case", {"abcdef/Info.plist"}, "abcdef"},
    {"in its own letters", {"ABCdef/Manifest.plist"}, "ABCdef"},
    {"both, the lower case first", {"ABCdef/Info.plist", "abcdef/Info.plist"}, "abcdef"},
    {"both, one without lists", {"ABCdef/Info.plist", "abcdef/x"}, "ABCdef"},
    {"a level deeper", {"ABCdef/abcdef/Info.plist"}, "ABCdef/abcdef"},
    {"begun, without lists", {"ABCdef/Status.plist"}, "ABCdef"},
    {"no folder", {"ABCdef"}, "abcdef"},
    {"another device's", {"abcdefg/Info.plist", "abcde/Info.plist"}, "abcdef"},
    {"an identifier that leads elsewhere", {}, ".._.._etc", "../../etc"},
    {"an identifier that is a path", {}, "_etc", "/etc"},
    {"an identifier of dots", {}, "__", ".."},
};

TEST(BackupFolders, AreFoundWhereTheHelperPutsThem) {
    for (const auto& one : kFolderCases) {
        SCOPED_TRACE(one.what);
        const TempFolder root;
        for (const char* file : one.files) {
            fs::create_directories((root / file).parent_path());
            writeWholeFile(root / file, "x");
        }
        EXPECT_EQ(folderOfDeviceBackup(root.path(), one.udid), root / one.expected);
    }
    EXPECT_EQ(folderOfDeviceBackup("/no/such/root", "ABC"), fs::path("/no/such/root/abc"));
    for (const char* name : {"ABCdef", "00008020-001D2D88ABCDEF01", "a b", "..."})
        EXPECT_TRUE(namesFolder(name)) << name;
    for (const char* name : {"", ".", "..", "../x", "/etc", "a/b", "--full", "\x1b[2J", "a\nb"})
        EXPECT_FALSE(namesFolder(name)) << name;
}

}  // namespace
}  // namespace salvor
