#pragma once

#include <filesystem>
#include <string>

#include "cli/JsonText.h"
#include "records/DeviceInfo.h"

namespace salvor::cli {

/// The version of iOS that the property lists of a backup tell anywhere, with the list that does:
/// "7.1.2 (Info.plist)"; "-" when none does.
std::string toldVersion(const std::filesystem::path& backup);
/// {"version", "source"}, or null.
Json toldVersionJson(const std::filesystem::path& backup);

/// The version that a scan takes when it is not asked for another: "7.1". Where that is 0.0 and
/// another one is told it names the option that takes the other.
std::string scannedVersion(const std::filesystem::path& backup, const DeviceInfo& device);

}  // namespace salvor::cli
