#include "backup/BackupInfoReader.h"

#include <gtest/gtest.h>
#include <optional>

#include "tests/support/Digest.h"
#include "tests/support/PropertyList.h"
#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

using Values = std::vector<std::pair<const char*, const char*>>;

/// A backup folder's property lists and what is to be read from them. "IsEncrypted" of the
/// manifest: -1 absent. The text "-" stands for an absent one.
struct InfoCase {
    const char* what;
    std::optional<Values> info;
    std::optional<Values> manifest;
    std::optional<Values> lockdown;
    int encrypted = -1;

    const char* name = "";
    const char* displayName = "";
    const char* version = "";
    int major = 0;
    int minor = 0;
    int known = -1;  ///< -1 unknown, else what `isEncrypted` says
    bool complete = false;
};

PropertyListDictionary dictionary(const Values& values) {
    PropertyListDictionary list;
    for (const auto& [key, value] : values) list.text(key, value);
    return list;
}

class DeviceDescription : public testing::TestWithParam<InfoCase> {
  protected:
    void write(const InfoCase& c) const {
        if (c.info) dictionary(*c.info).writeXml(folder / "Info.plist");
        if (!c.manifest) return;
        auto manifest = dictionary(*c.manifest);
        if (c.lockdown) manifest.dictionary("Lockdown", dictionary(*c.lockdown));
        if (c.encrypted >= 0) manifest.boolean("IsEncrypted", c.encrypted == 1);
        manifest.writeBinary(folder / "Manifest.plist");
    }
    TempFolder folder;
};

Text expected(const char* text) {
    return std::string(text) == "-" ? std::nullopt : Text(text);
}

TEST_P(DeviceDescription, ComesFromTheRightLists) {
    const InfoCase& c = GetParam();
    write(c);
    const auto read = readBackupInfo(folder.path());
    const DeviceInfo& device = read.device;
    EXPECT_EQ(device.DeviceName, expected(c.name));
    EXPECT_EQ(device.DisplayName, expected(c.displayName));
    EXPECT_EQ(device.ProductVersion, expected(c.version));
    EXPECT_EQ(device.iOSMajorVersion, c.major);
    EXPECT_EQ(device.iOSMinorVersion, c.minor);
    EXPECT_EQ(device.knownIfEncrypted, c.known >= 0);
    EXPECT_EQ(device.isEncrypted, c.known == 1);
    EXPECT_EQ(read.complete, c.complete);
    EXPECT_EQ(device.BackupDate, Text("N/A"));
    EXPECT_EQ(device.BackupLocation, Text(folder.path().string()));
    EXPECT_FALSE(device.Connected);
}

const Values kInfo{
    {"Device Name", "Phone"}, {"Display Name", "Shown"}, {"Product Version", "7.1.2"}};
const Values kLockdown{{"ProductVersion", "6.1"}, {"DeviceName", "Locked"}};

INSTANTIATE_TEST_SUITE_P(
    Lists, DeviceDescription,
    testing::Values(
        InfoCase{.what = "a: no manifest, the version of Info.plist stays",
                 .info = kInfo,
                 .manifest = {},
                 .lockdown = {},
                 .name = "Phone",
                 .displayName = "Shown",
                 .version = "7.1.2",
                 .major = 7,
                 .minor = 1,
                 .complete = true},
        InfoCase{.what = "a: the manifest's top-level version wins, encryption is not consulted",
                 .info = kInfo,
                 .manifest = Values{{"ProductVersion", "9"}},
                 .lockdown = kLockdown,
                 .encrypted = 1,
                 .name = "Phone",
                 .displayName = "Shown",
                 .version = "9",
                 .major = 9,
                 .complete = true},
        InfoCase{.what = "a: a manifest without one leaves no version, and that is complete",
                 .info = kInfo,
                 .manifest = Values{},
                 .lockdown = kLockdown,
                 .encrypted = 1,
                 .name = "Phone",
                 .displayName = "Shown",
                 .version = "-",
                 .known = 1,
                 .complete = true},
        InfoCase{.what = "a: an empty version in the manifest is blank",
                 .info = kInfo,
                 .manifest = Values{{"ProductVersion", ""}},
                 .lockdown = {},
                 .encrypted = 0,
                 .name = "Phone",
                 .displayName = "Shown",
                 .version = "",
                 .known = 0},
        InfoCase{.what = "a: a blank version is not empty, but not complete either",
                 .info = kInfo,
                 .manifest = Values{{"ProductVersion", " \n"}},
                 .lockdown = {},
                 .encrypted = 1,
                 .name = "Phone",
                 .displayName = "Shown",
                 .version = " \n"},
        InfoCase{.what = "a: an empty device name is a name",
                 .info = Values{{"Device Name", ""}, {"Product Version", "5.0"}},
                 .manifest = {},
                 .lockdown = {},
                 .displayName = "-",
                 .version = "5.0",
                 .major = 5,
                 .complete = true},
        InfoCase{.what = "b: the top level of the manifest",
                 .info = Values{{"Display Name", "x"}},
                 .manifest = Values{{"ProductVersion", "10.3.1"}},
                 .lockdown = kLockdown,
                 .encrypted = 1,
                 .version = "10.3.1",
                 .major = 10,
                 .minor = 3,
                 .known = 1,
                 .complete = true},
        InfoCase{.what = "b: Lockdown when the top level has none",
                 .info = Values{},
                 .manifest = Values{},
                 .lockdown = kLockdown,
                 .encrypted = 0,
                 .name = "Locked",
                 .version = "6.1",
                 .major = 6,
                 .minor = 1,
                 .known = 0,
                 .complete = true},
        InfoCase{.what = "c: as b, with the device's name to display",
                 .info = {},
                 .manifest = Values{},
                 .lockdown = kLockdown,
                 .name = "Locked",
                 .displayName = "Locked",
                 .version = "6.1",
                 .major = 6,
                 .minor = 1,
                 .complete = true},
        InfoCase{.what = "c: no Lockdown, no name, no version",
                 .info = {},
                 .manifest = Values{},
                 .lockdown = {},
                 .name = "-",
                 .displayName = "-",
                 .version = "-"},
        InfoCase{.what = "c: no name and a blank version is complete",
                 .info = {},
                 .manifest = Values{},
                 .lockdown = Values{{"ProductVersion", ""}},
                 .name = "-",
                 .displayName = "-",
                 .version = "",
                 .complete = true},
        InfoCase{.what = "d: neither list", .info = {}, .manifest = {}, .lockdown = {}},
        InfoCase{.what = "d: Info.plist without the device's name",
                 .info = Values{},
                 .manifest = {},
                 .lockdown = {}}),
    [](const auto& test) { return "Case" + std::to_string(test.index); });

TEST(BackupInfoReader, FindsTheListsWhateverTheirCaseAndDescribesAfresh) {
    const TempFolder folder;
    auto info = dictionary(kInfo);
    info.text("Unique Identifier", "00AbCdEF").text("Phone Number", "+1 555");
    info.text("Serial Number", "S1").text("Product Type", "iPhone3,1");
    info.writeXml(folder / "info.PLIST");
    writeWholeFile(folder / "payload", std::string(1500, 'x'));
    ScanState state;
    state.BACKUP_DIRECTORY = folder.path().string();
    state.deviceInfo.IMEI = "left over";
    state.deviceInfo.iOSMajorVersion = 3;
    EXPECT_TRUE(getInfoFromBackup(state));
    EXPECT_EQ(state.deviceInfo.UniqueDeviceID, Text("00abcdef"));
    EXPECT_EQ(state.deviceInfo.PhoneNumber, Text("+1 555"));
    EXPECT_EQ(state.deviceInfo.SerialNumber, Text("S1"));
    EXPECT_EQ(state.deviceInfo.ProductType, Text("iPhone3,1"));
    EXPECT_EQ(state.deviceInfo.IMEI, Text(""));
    EXPECT_TRUE(state.deviceInfo.AssignSize->ends_with("KB"));
    ASSERT_TRUE(state._deviceInfoBackup);
    EXPECT_EQ(state._deviceInfoBackup->UniqueDeviceID, Text("00abcdef"));
    EXPECT_EQ(state._deviceInfoBackup->ProductVersion, std::nullopt);
}

TEST(BackupInfoReader, KnowsTheVersionThatAnyListNames) {
    const TempFolder folder;
    dictionary({{"Device Name", "x"}, {"Product Version", "0"}}).writeXml(folder / "Info.plist");
    PropertyListDictionary manifest;
    manifest.dictionary("Lockdown", dictionary(kLockdown)).boolean("IsEncrypted", true);
    manifest.writeXml(folder / "Manifest.plist");
    const auto facts = readVersionFacts(folder.path());
    EXPECT_EQ(facts.infoPlist, Text("0"));
    EXPECT_EQ(facts.manifestTop, std::nullopt);
    EXPECT_EQ(facts.lockdown, Text("6.1"));
    EXPECT_EQ(facts.best(), Text("6.1"));
    EXPECT_TRUE(facts.manifestSaysEncrypted);
    EXPECT_EQ(VersionFacts{}.best(), std::nullopt);
}

struct VersionCase {
    const char* text;
    int major;
    int minor;
};

class Versions : public testing::TestWithParam<VersionCase> {};

TEST_P(Versions, AreSplitAtTheirDots) {
    DeviceInfo device;
    device.ProductVersion = GetParam().text;
    splitProductVersion(device);
    EXPECT_EQ(device.iOSMajorVersion, GetParam().major);
    EXPECT_EQ(device.iOSMinorVersion, GetParam().minor);
}

INSTANTIATE_TEST_SUITE_P(Texts, Versions,
                         testing::Values(VersionCase{"9", 9, 0}, VersionCase{"10.3.1", 10, 3},
                                         VersionCase{"", 0, 0}, VersionCase{".", 0, 0},
                                         VersionCase{"0.5", 0, 5}, VersionCase{" 8x.2b", 8, 2},
                                         VersionCase{"7..1", 7, 0}, VersionCase{"-1.+4", -1, 4},
                                         VersionCase{"99999999999.1", 2147483647, 1}));

}  // namespace
}  // namespace salvor
