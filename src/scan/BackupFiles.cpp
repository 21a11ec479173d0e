#include "scan/BackupFiles.h"

#include <system_error>

namespace salvor {

std::optional<std::filesystem::path> BackupFiles::find(const std::string& storedName) const {
    if (storedName.empty()) return std::nullopt;
    std::error_code ignored;
    auto flat = folder_ / storedName;
    if (std::filesystem::is_regular_file(flat, ignored)) return flat;
    if (storedName.size() < 2) return std::nullopt;
    auto nested = folder_ / storedName.substr(0, 2) / storedName;
    if (std::filesystem::is_regular_file(nested, ignored)) return nested;
    return std::nullopt;
}

std::filesystem::path BackupFiles::path(const std::string& storedName) const {
    return find(storedName).value_or(folder_ / storedName);
}

}  // namespace salvor
