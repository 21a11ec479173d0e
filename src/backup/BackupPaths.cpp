#include "backup/BackupPaths.h"

#include <algorithm>
#include <system_error>
#include <unistd.h>

#include "util/FileUtils.h"

namespace salvor {
std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& folder,
                                                      const std::string& name) {
    std::error_code ignored;
    if (std::filesystem::exists(folder / name, ignored)) return folder / name;
    const std::string wanted = lowerCase(name);
    for (const auto& entry : FileUtils::entriesOf(folder)) {
        if (lowerCase(entry.name) == wanted) return folder / entry.name;
    }
    return std::nullopt;
}

bool isReadableFolder(const std::filesystem::path& folder) {
    std::error_code ignored;
    return std::filesystem::is_directory(folder, ignored) &&
           ::access(folder.c_str(), R_OK | X_OK) == 0;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

}  // namespace salvor
