#include "tools/sample/SampleFolder.h"

#include "tools/sample/Digest.h"
#include "tools/sample/ManifestWriter.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

constexpr std::int64_t kBackupAge = std::int64_t{200} * 86400;

std::filesystem::path storedPath(const std::string& name, bool nested) {
    return nested ? std::filesystem::path(name.substr(0, 2)) / name : std::filesystem::path(name);
}

}  // namespace

SampleFolder::SampleFolder(std::filesystem::path folder, const SampleOptions& options,
                           const SampleDevice& device)
    : folder_(std::move(folder)), options_(options), device_(device), random_(options.seed) {
    truth_.ios = device.ios;
    truth_.version = device.version;
    truth_.deviceName = "Sample iPhone";
    truth_.uniqueDeviceID = random_.digits(40, "0123456789abcdef");
    truth_.seed = options.seed;
    truth_.layout.pageSize = options.pageSize;
    truth_.layout.autoVacuum = options.autoVacuum.value_or(device.messageVacuum);
    truth_.layout.writeAheadLog = device.writeAheadLog;
    truth_.layout.secureDelete = options.secureDelete.value_or(device.secureDelete);
    if (!options.password) return;
    const auto first = hasDatabaseIndex() ? std::optional(options.firstRounds) : std::nullopt;
    keys_.emplace(options.seed, *options.password, first);
}

std::filesystem::path SampleFolder::add(const std::string& domain, const std::string& path) {
    MbdbRecord record;
    record.domain = domain;
    record.path = path;
    index_.push_back(record);
    return addUnlisted(sampleStoredName(domain, path));
}

std::filesystem::path SampleFolder::addUnlisted(const std::string& storedName) const {
    auto stored = folder_ / storedPath(storedName, isNested());
    std::filesystem::create_directories(stored.parent_path());
    return stored;
}

void SampleFolder::finish() {
    writeInfo();
    writeManifest(writeIndex());
    writeStatus();
}

void SampleFolder::writeInfo() const {
    PropertyListDictionary info;
    info.text("Build Version", device_.build)
        .text("Device Name", truth_.deviceName)
        .text("Display Name", truth_.deviceName)
        .text("GUID", sampleDigest(truth_.uniqueDeviceID).substr(0, 32))
        .text("ICCID", "8901000000000000001")
        .text("IMEI", "010000000000001")
        .emptyArray("Installed Applications")
        .date("Last Backup Date", device_.startOfUse + kBackupAge)
        .text("Phone Number", "+1 (555) 010-0000")
        .text("Product Type", device_.productType)
        .text("Product Version", device_.version)
        .text("Serial Number", "SAMPLE000001")
        .text("Target Identifier", truth_.uniqueDeviceID)
        .text("Target Type", "Device")
        .text("Unique Identifier", truth_.uniqueDeviceID)
        .text("iTunes Version", "12.1")
        .writeXml(folder_ / "Info.plist");
}

void SampleFolder::writeManifest(const std::string& manifestKey) const {
    PropertyListDictionary lockdown;
    lockdown.text("BuildVersion", device_.build)
        .text("DeviceName", truth_.deviceName)
        .text("ProductType", device_.productType)
        .text("ProductVersion", device_.version)
        .text("SerialNumber", "SAMPLE000001")
        .text("UniqueDeviceID", truth_.uniqueDeviceID);
    PropertyListDictionary manifest;
    if (!manifestKey.empty()) manifest.data("ManifestKey", manifestKey);
    if (!options_.lockdownOnly && !hasDatabaseIndex())
        manifest.text("ProductVersion", device_.version);
    manifest.dictionary("Applications", {})
        .data("BackupKeyBag", keys_ ? keys_->bag() : "VERS")
        .date("Date", device_.startOfUse + kBackupAge)
        .boolean("IsEncrypted", options_.encrypted || keys_)
        .dictionary("Lockdown", std::move(lockdown))
        .text("SystemDomainsVersion", "20.0")
        .text("Version", hasDatabaseIndex() ? "10.0" : "9.1")
        .boolean("WasPasscodeSet", false)
        .writeBinary(folder_ / "Manifest.plist");
}

void SampleFolder::writeStatus() const {
    PropertyListDictionary status;
    status.text("BackupState", "new")
        .date("Date", device_.startOfUse + kBackupAge)
        .boolean("IsFullBackup", true)
        .text("SnapshotState", "finished")
        .text("UUID", SampleRandom(options_.seed + 1).uuid())
        .text("Version", hasDatabaseIndex() ? "3.3" : "2.4")
        .writeBinary(folder_ / "Status.plist");
}

std::vector<MbdbRecord> SampleFolder::describeFiles() {
    const auto time = static_cast<std::uint32_t>(device_.startOfUse + kBackupAge);
    std::vector<MbdbRecord> records(2);
    records[0].domain = records[1].domain = "HomeDomain";
    records[0].path = "Library";
    records[0].mode = 0040755;
    records[1].path = "Library/Preferences/current";
    records[1].mode = 0120755;
    records[1].linkTarget = "com.apple.preferences";
    for (MbdbRecord record : index_) {
        const auto name = sampleStoredName(record.domain, record.path);
        const auto stored = folder_ / storedPath(name, isNested());
        const auto bytes = readWholeFile(stored);
        record.size = bytes.size();
        record.digest = sampleDigestBytes(bytes);
        record.protectionClass = hasDatabaseIndex() ? 4 : 3;
        if (keys_) {
            const auto key = keys_->makeKey(record.protectionClass);
            record.encryptionKey = key.wrapped;
            writeWholeFile(stored, SampleKeys::encrypt(key, bytes));
        }
        records.push_back(std::move(record));
    }
    records.back().properties = {{"com.apple.sample", "yes"}};
    std::uint64_t inode = 1000;
    for (auto& record : records) {
        record.inode = ++inode;
        record.modified = record.statusChanged = record.born = time;
    }
    return records;
}

std::string SampleFolder::writeIndex() {
    const auto records = describeFiles();
    if (!hasDatabaseIndex()) {
        writeWholeFile(folder_ / "Manifest.mbdb", mbdbBytes(records));
        return {};
    }
    const auto index = folder_ / "Manifest.db";
    writeManifestDatabase(index, records);
    if (!keys_) return {};
    const auto key = keys_->makeKey(4);
    writeWholeFile(index, SampleKeys::encrypt(key, readWholeFile(index)));
    return key.wrapped;
}

}  // namespace salvor
