#include "cli/VersionText.h"

#include <fmt/format.h>

#include "backup/BackupInfoReader.h"

namespace salvor::cli {

std::string toldVersion(const std::filesystem::path& backup) {
    const auto told = readVersionFacts(backup).told();
    return told.version ? fmt::format("{} ({})", *told.version, told.source) : "-";
}

Json toldVersionJson(const std::filesystem::path& backup) {
    const auto told = readVersionFacts(backup).told();
    if (!told.version) return nullptr;
    return {{"version", std::string(*told.version)}, {"source", told.source}};
}

std::string scannedVersion(const std::filesystem::path& backup, const DeviceInfo& device) {
    const auto version = fmt::format("{}.{}", device.iOSMajorVersion, device.iOSMinorVersion);
    const bool otherTold = version == "0.0" && readVersionFacts(backup).told().version;
    return otherTold ? version + " (see --ios auto)" : version;
}

}  // namespace salvor::cli
