#include "backup/BackupInfoReader.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sstream>

#include "backup/BackupSource.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

/// A dictionary of texts, written as "key=value;key=value"; "IsEncrypted" is a truth value.
PropertyListDictionary dictionary(const char* entries) {
    PropertyListDictionary list;
    std::istringstream rest(entries);
    for (std::string entry; std::getline(rest, entry, ';');) {
        const auto key = entry.substr(0, entry.find('='));
        const auto value = entry.substr(key.size() + 1);
        key == "IsEncrypted" ? list.boolean(key, value == "yes") : list.text(key, value);
    }
    return list;
}

/// A backup folder's property lists, absent ones null, and what is read from them: name, name to
/// display, version, its numbers, "encrypted" or "plain" where that is known, and "complete". "-"
/// stands for an absent text.
struct InfoCase {
    const char* what;
    const char* info;
    const char* manifest;
    const char* lockdown;
    const char* expected;
};

constexpr auto kInfo = "Device Name=Phone;Display Name=Shown;Product Version=7.1.2";
constexpr auto kLockdown = "ProductVersion=6.1;DeviceName=Locked";

const InfoCase kCases[] = {
    {"a: no manifest, the version of Info.plist stays", kInfo, nullptr, nullptr,
     "Phone, Shown, 7.1.2, 7.1, complete"},
    {"a: the manifest's top-level version wins, encryption is not consulted", kInfo,
     "ProductVersion=9;IsEncrypted=yes", kLockdown, "Phone, Shown, 9, 9.0, complete"},
    {"a: a manifest without one leaves no version, and that is complete", kInfo, "IsEncrypted=yes",
     kLockdown, "Phone, Shown, -, 0.0, encrypted, complete"},
    {"a: an empty version in the manifest is blank", kInfo, "ProductVersion=;IsEncrypted=no",
     nullptr, "Phone, Shown, , 0.0, plain"},
    {"a: a blank version is not empty, but not complete either", kInfo,
     "ProductVersion= \n;IsEncrypted=yes", nullptr, "Phone, Shown,  \n, 0.0"},
    {"a: an empty device name is a name", "Device Name=;Product Version=5.0", nullptr, nullptr,
     ", -, 5.0, 5.0, complete"},
    {"b: the top level of the manifest", "Display Name=x", "ProductVersion=10.3.1;IsEncrypted=yes",
     kLockdown, ", , 10.3.1, 10.3, encrypted, complete"},
    {"b: Lockdown when the top level has none", "", "IsEncrypted=no", kLockdown,
     "Locked, , 6.1, 6.1, plain, complete"},
    {"c: as b, with the device's name to display", nullptr, "", kLockdown,
     "Locked, Locked, 6.1, 6.1, complete"},
    {"c: no Lockdown, no name, no version", nullptr, "", nullptr, "-, -, -, 0.0"},
    {"c: no name and a blank version is complete", nullptr, "",
     "ProductVersion=", "-, -, , 0.0, complete"},
    {"d: neither list", nullptr, nullptr, nullptr, ", , , 0.0"},
    {"d: Info.plist without the device's name", "", nullptr, nullptr, ", , , 0.0"},
};

void writeLists(const InfoCase& c, const std::filesystem::path& folder) {
    if (c.info != nullptr) dictionary(c.info).writeXml(folder / "Info.plist");
    if (c.manifest == nullptr) return;
    auto manifest = dictionary(c.manifest);
    if (c.lockdown != nullptr) manifest.dictionary("Lockdown", dictionary(c.lockdown));
    manifest.writeBinary(folder / "Manifest.plist");
}

std::string shown(const BackupInfo& info) {
    const DeviceInfo& device = info.device;
    const char* encryption = device.isEncrypted ? ", encrypted" : ", plain";
    return fmt::format(
        "{}, {}, {}, {}.{}{}{}", device.DeviceName.value_or("-"), device.DisplayName.value_or("-"),
        device.ProductVersion.value_or("-"), device.iOSMajorVersion, device.iOSMinorVersion,
        device.knownIfEncrypted ? encryption : "", info.complete ? ", complete" : "");
}

TEST(BackupInfoReader, DescribesTheDeviceFromTheRightLists) {
    for (const InfoCase& c : kCases) {
        const TempFolder folder;
        writeLists(c, folder.path());
        const auto info = readBackupInfo(folder.path());
        EXPECT_EQ(shown(info), c.expected) << c.what;
        EXPECT_EQ(info.device.BackupDate, Text("N/A"));
        EXPECT_EQ(info.device.BackupLocation, Text(folder.path().string()));
    }
}

TEST(BackupInfoReader, FindsTheListsWhateverTheirCaseAndDescribesAfresh) {
    const TempFolder folder;
    dictionary(
        "Device Name=Phone;Unique Identifier=00AbCdEF;Phone Number=+1 555;Serial Number=S1;"
        "Product Type=iPhone3,1")
        .writeXml(folder / "info.PLIST");
    writeWholeFile(folder / "payload", std::string(1500, 'x'));
    ScanState state;
    useBackup(state, folder.path());
    state.deviceInfo.IMEI = "left over";
    EXPECT_TRUE(getInfoFromBackup(state));
    const DeviceInfo& device = state.deviceInfo;
    EXPECT_EQ(device.UniqueDeviceID, Text("00abcdef"));
    EXPECT_EQ(device.PhoneNumber, Text("+1 555"));
    EXPECT_EQ(device.SerialNumber, Text("S1"));
    EXPECT_EQ(device.ProductType, Text("iPhone3,1"));
    EXPECT_EQ(device.IMEI, Text(""));
    EXPECT_TRUE(device.AssignSize->ends_with("KB"));
    ASSERT_TRUE(state._deviceInfoBackup);
    EXPECT_EQ(state._deviceInfoBackup->UniqueDeviceID, Text("00abcdef"));
    EXPECT_EQ(state._deviceInfoBackup->SerialNumber, std::nullopt);
}

TEST(BackupInfoReader, KnowsTheVersionThatAnyListNames) {
    const TempFolder folder;
    writeLists({"", "Device Name=x;Product Version=0", "IsEncrypted=yes", "ProductVersion=6", ""},
               folder.path());
    const auto facts = readVersionFacts(folder.path());
    EXPECT_EQ(facts.infoPlist, Text("0"));
    EXPECT_EQ(facts.manifestTop, std::nullopt);
    EXPECT_EQ(facts.best(), Text("6"));
    EXPECT_TRUE(facts.manifestSaysEncrypted);
    EXPECT_EQ(VersionFacts{}.best(), std::nullopt);
}

TEST(BackupInfoReader, SplitsVersionsAtTheirDots) {
    const std::pair<const char*, const char*> cases[] = {
        {"9", "9.0"},    {"10.3.1", "10.3"}, {"", "0.0"},
        {".", "0.0"},    {"0.5", "0.5"},     {" 8x.2b", "8.2"},
        {"7..1", "7.0"}, {"-1.+4", "-1.4"},  {"99999999999.1", "2147483647.1"}};
    for (const auto& [text, numbers] : cases) {
        DeviceInfo device;
        device.ProductVersion = text;
        splitProductVersion(device);
        EXPECT_EQ(fmt::format("{}.{}", device.iOSMajorVersion, device.iOSMinorVersion), numbers);
    }
}

}  // namespace
}  // namespace salvor
