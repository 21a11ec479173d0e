#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "device/HelperTask.h"

namespace salvor {

/// The program that writes a fresh backup of a device, and its arguments. In these "{udid}" stands
/// for the device's identifier, "{target}" for the same in lower case and "{folder}" for the
/// folder below which the backup goes.
struct BackupHelper {
    std::vector<std::string> words{"idevicebackup2", "--udid", "{udid}", "backup", "{folder}"};

    /// Words separated by blanks. Nothing when there is none.
    static std::optional<BackupHelper> parse(const std::string& text);
    std::vector<std::string> wordsFor(const std::string& udid,
                                      const std::filesystem::path& folder) const;
};

/// The device refused, typically because it is locked. Told by status 1, by that of the usual
/// helper, which ends with minus the device's error, or by what a helper that failed says.
bool wasRefused(const HelperResult& result);

}  // namespace salvor
