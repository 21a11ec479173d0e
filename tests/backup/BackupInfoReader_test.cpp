#include "backup/BackupInfoReader.h"

#include <gtest/gtest.h>
#include <optional>
#include <ostream>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"

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
    int encrypted;

    const char* name;
    const char* displayName;
    const char* version;
    int major;
    int minor;
    int known;  ///< -1 unknown, else what `isEncrypted` says
    bool complete;

    friend std::ostream& operator<<(std::ostream& out, const InfoCase& c) { return out << c.what; }
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
    SCOPED_TRACE(c.what);
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

const std::optional<Values> kNoList;
const Values kBlankList;
const Values kNameless{{"Device Name", ""}, {"Product Version", "5.0"}};
const Values kDisplayOnly{{"Display Name", "x"}};
const Values kEmptyVersion{{"ProductVersion", ""}};
const Values kBlankVersion{{"ProductVersion", " \n"}};
const Values kVersion9{{"ProductVersion", "9"}};
const Values kVersion10{{"ProductVersion", "10.3.1"}};

INSTANTIATE_TEST_SUITE_P(
    Lists, DeviceDescription,
    testing::Values(
        InfoCase{"a: no manifest, the version of Info.plist stays", kInfo, kNoList, kNoList, -1,
                 "Phone", "Shown", "7.1.2", 7, 1, -1, true},
        InfoCase{"a: the manifest's top-level version wins, encryption is not consulted", kInfo,
                 kVersion9, kLockdown, 1, "Phone", "Shown", "9", 9, 0, -1, true},
        InfoCase{"a: a manifest without one leaves no version, and that is complete", kInfo,
                 kBlankList, kLockdown, 1, "Phone", "Shown", "-", 0, 0, 1, true},
        InfoCase{"a: an empty version in the manifest is blank", kInfo, kEmptyVersion, kNoList, 0,
                 "Phone", "Shown", "", 0, 0, 0, false},
        InfoCase{"a: a blank version is not empty, but not complete either", kInfo, kBlankVersion,
                 kNoList, 1, "Phone", "Shown", " \n", 0, 0, -1, false},
        InfoCase{"a: an empty device name is a name", kNameless, kNoList, kNoList, -1, "", "-",
                 "5.0", 5, 0, -1, true},
        InfoCase{"b: the top level of the manifest", kDisplayOnly, kVersion10, kLockdown, 1, "", "",
                 "10.3.1", 10, 3, 1, true},
        InfoCase{"b: Lockdown when the top level has none", kBlankList, kBlankList, kLockdown, 0,
                 "Locked", "", "6.1", 6, 1, 0, true},
        InfoCase{"c: as b, with the device's name to display", kNoList, kBlankList, kLockdown, -1,
                 "Locked", "Locked", "6.1", 6, 1, -1, true},
        InfoCase{"c: no Lockdown, no name, no version", kNoList, kBlankList, kNoList, -1, "-", "-",
                 "-", 0, 0, -1, false},
        InfoCase{"c: no name and a blank version is complete", kNoList, kBlankList, kEmptyVersion,
                 -1, "-", "-", "", 0, 0, -1, true},
        InfoCase{"d: neither list", kNoList, kNoList, kNoList, -1, "", "", "", 0, 0, -1, false},
        InfoCase{"d: Info.plist without the device's name", kBlankList, kNoList, kNoList, -1, "",
                 "", "", 0, 0, -1, false}),
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
