#include "backup/BackupInfoReader.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

#include "backup/BackupSource.h"
#include "backup/BackupStore.h"
#include "util/FileUtils.h"
#include "util/PropertyList.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

constexpr auto kInfo = "Info.plist";
constexpr auto kManifest = "Manifest.plist";

bool isEmpty(const Text& text) {
    return !text || text->empty();
}

// An absent text is not blank.
bool isBlank(const Text& text) {
    return text && text->find_first_not_of(" \t\n\v\f\r") == std::string::npos;
}

void readEncryption(DeviceInfo& device, const PropertyList& manifest) {
    const auto encrypted = manifest.boolean("IsEncrypted");
    device.knownIfEncrypted = encrypted.has_value();
    if (encrypted) device.isEncrypted = *encrypted;
}

void readFromInfo(DeviceInfo& device, const PropertyList& info) {
    device.DeviceName = info.text("Device Name");
    device.DisplayName = info.text("Display Name");
    device.SerialNumber = info.text("Serial Number");
    device.ProductType = info.text("Product Type");
    device.UniqueDeviceID = info.text("Unique Identifier");
    device.ProductVersion = info.text("Product Version");
    device.PhoneNumber = info.text("Phone Number");
}

// Absent in most manifests. Kept: manifest-version-wins.
void overwriteVersion(DeviceInfo& device, const PropertyList& manifest) {
    device.ProductVersion = manifest.text("ProductVersion");
    if (isEmpty(device.ProductVersion)) readEncryption(device, manifest);
}

void readFromManifest(DeviceInfo& device, const PropertyList& manifest) {
    device.ProductVersion = manifest.text("ProductVersion");
    if (isEmpty(device.ProductVersion)) {
        const PropertyList lockdown = manifest.dictionary("Lockdown");
        device.ProductVersion = lockdown.text("ProductVersion");
        device.DeviceName = lockdown.text("DeviceName");
        device.ProductType = lockdown.text("ProductType");
        device.UniqueDeviceID = lockdown.text("UniqueDeviceID");
        device.SerialNumber = lockdown.text("SerialNumber");
        if (Text card = lockdown.text("IntegratedCircuitCardIdentity")) device.ICICD = card;
    }
    readEncryption(device, manifest);
}

/// A property list of the backup's own, without values when it cannot be read.
struct OwnList {
    OwnList(const BackupFiles& files, const char* name) {
        const auto file = files.own(name);
        there = file.state != FileState::Absent;
        if (file) list = PropertyList::read(file.path);
    }
    bool there = false;
    PropertyList list;
};

void readPropertyLists(DeviceInfo& device, const BackupFiles& files) {
    const OwnList info(files, kInfo);
    const OwnList manifest(files, kManifest);
    if (info.list.has("Device Name")) {
        readFromInfo(device, info.list);
        if (manifest.there) overwriteVersion(device, manifest.list);
    } else if (manifest.there) {
        readFromManifest(device, manifest.list);
        if (!info.there) device.DisplayName = device.DeviceName;
    }
}

bool namesVersion(const Text& version) {
    DeviceInfo device;
    device.ProductVersion = version;
    splitProductVersion(device);
    return device.iOSMajorVersion != 0 || device.iOSMinorVersion != 0;
}

VersionFacts versionFactsOf(const BackupFiles& files) {
    VersionFacts facts;
    const auto manifest = OwnList(files, kManifest).list;
    facts.infoPlist = OwnList(files, kInfo).list.text("Product Version");
    facts.manifestTop = manifest.text("ProductVersion");
    facts.lockdown = manifest.dictionary("Lockdown").text("ProductVersion");
    facts.manifestSaysEncrypted = manifest.boolean("IsEncrypted").value_or(false);
    return facts;
}

/// The manifest of a backup whose index is a database never tells its version at the top.
void useKnownVersion(DeviceInfo& device, const BackupFiles& files) {
    if (namesVersion(device.ProductVersion) || !BackupStore::databaseIndex(files)) return;
    if (const Text known = versionFactsOf(files).best()) device.ProductVersion = known;
}

DeviceInfo describe(const BackupFiles& files, std::uint64_t bytes) {
    DeviceInfo device = resetDescription(FileUtils::sizeText(bytes));
    readPropertyLists(device, files);
    useKnownVersion(device, files);
    return device;
}

// Leading blanks, a sign, digits; what follows is ignored, and a number too large for the field
// is cut to its bound.
std::int32_t integerValue(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
    if (error == std::errc::invalid_argument) return 0;
    const bool tooLarge = error != std::errc() || value > static_cast<std::uint32_t>(kMax);
    const std::int32_t number = tooLarge ? kMax : static_cast<std::int32_t>(value);
    return negative ? -number : number;
}

void normalise(DeviceInfo& device, const std::filesystem::path& folder) {
    auto& identifier = device.UniqueDeviceID;
    if (identifier) identifier = StringUtils::lowerCase(std::string(*identifier));
    splitProductVersion(device);
    device.BackupLocation = folder.string();
}

bool resultOf(const DeviceInfo& device) {
    // Kept: complete-without-version.
    return device.DeviceName ? !isBlank(device.ProductVersion) : isBlank(device.ProductVersion);
}

/// The dates that a backup's lists have of it, whichever program wrote them.
std::optional<std::int64_t> ownDate(const BackupFiles& files) {
    constexpr std::pair<const char*, const char*> kDates[] = {
        {kInfo, "Last Backup Date"}, {kManifest, "Date"}, {"Status.plist", "Date"}};
    std::optional<std::int64_t> latest;
    for (const auto& [name, key] : kDates) {
        const auto date = OwnList(files, name).list.date(key);
        if (date && *date > 0) latest = std::max(latest.value_or(0), *date);
    }
    return latest;
}

}  // namespace

void splitProductVersion(DeviceInfo& device) {
    const std::string version = device.ProductVersion.value_or("");
    const auto dot = version.find('.');
    const std::int32_t major = integerValue(std::string_view(version).substr(0, dot));
    if (major != 0) device.iOSMajorVersion = major;
    if (dot == std::string::npos) return;
    const std::string rest = version.substr(dot + 1);
    device.iOSMinorVersion = integerValue(std::string_view(rest).substr(0, rest.find('.')));
}

DeviceInfo resetDescription(const std::string& assignSize) {
    DeviceInfo device;
    for (auto* field : {&device.ProductVersion, &device.IMSI, &device.IMEI, &device.ICICD,
                        &device.DeviceName, &device.DisplayName, &device.PhoneNumber}) {
        *field = "";
    }
    device.AssignSize = assignSize;
    device.BackupDate = "N/A";
    return device;
}

void readEncryptionOfDevice(DeviceInfo& device, const BackupFiles& files) {
    const OwnList manifest(files, kManifest);
    if (manifest.there && isEmpty(manifest.list.text("ProductVersion")))
        readEncryption(device, manifest.list);
}

BackupInfo readBackupInfo(const std::filesystem::path& folder) {
    const auto files = openBackup(folder);
    BackupInfo info;
    info.folderBytes = files->totalBytes();
    info.device = describe(*files, info.folderBytes);
    normalise(info.device, folder);
    info.complete = resultOf(info.device);
    info.madeAt = ownDate(*files);
    return info;
}

bool finishDescription(ScanState& state) {
    DeviceInfo& device = state.deviceInfo;
    normalise(device, state.BACKUP_DIRECTORY);
    if (device.DeviceName) {
        auto last = std::make_shared<DeviceInfo>();
        last->DeviceName = device.DeviceName;
        last->UniqueDeviceID = device.UniqueDeviceID;
        state._deviceInfoBackup = std::move(last);
    }
    return resultOf(device);
}

bool getInfoFromBackup(ScanState& state) {
    state.deviceInfo = describe(*state.backupFiles(), state.backupFiles()->totalBytes());
    return finishDescription(state);
}

VersionFacts::Told VersionFacts::told() const {
    if (namesVersion(manifestTop)) return {manifestTop, "Manifest.plist"};
    if (namesVersion(infoPlist)) return {infoPlist, "Info.plist"};
    if (namesVersion(lockdown)) return {lockdown, "Manifest.plist, Lockdown"};
    return {};
}

Text VersionFacts::best() const {
    for (const auto* version : {&infoPlist, &lockdown}) {
        if (namesVersion(*version)) return *version;
    }
    return std::nullopt;
}

VersionFacts readVersionFacts(const std::filesystem::path& folder) {
    return versionFactsOf(*openBackup(folder));
}

}  // namespace salvor
