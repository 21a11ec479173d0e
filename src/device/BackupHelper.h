#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

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

}  // namespace salvor
