#include "backup/BackupPaths.h"

#include <system_error>
#include <unistd.h>

#include "util/FileUtils.h"
#include "util/StringUtils.h"

namespace salvor {
std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& folder,
                                                      const std::string& name) {
    std::error_code ignored;
    if (std::filesystem::exists(folder / name, ignored)) return folder / name;
    const std::string wanted = StringUtils::lowerCase(name);
    for (const auto& entry : FileUtils::entriesOf(folder)) {
        if (StringUtils::lowerCase(entry.name) == wanted) return folder / entry.name;
    }
    return std::nullopt;
}

bool isReadableFolder(const std::filesystem::path& folder) {
    std::error_code ignored;
    return std::filesystem::is_directory(folder, ignored) &&
           ::access(folder.c_str(), R_OK | X_OK) == 0;
}

}  // namespace salvor
