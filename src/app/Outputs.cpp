#include "app/Outputs.h"

#include <cerrno>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "util/PathRules.h"

namespace salvor {

namespace fs = std::filesystem;

std::string whyInsideBackup(const fs::path& output, const fs::path& backup) {
    if (!liesInside(output, backup)) return "";
    return output.string() + ": lies inside the backup, which is only read";
}

std::string whyNoRoom(const fs::path& output, OutputKind kind) {
    auto folder = resolvedPath(output);
    std::error_code ignored;
    if (kind == OutputKind::File) {
        if (fs::is_directory(folder, ignored)) return output.string() + ": is a folder";
        if (fs::exists(folder, ignored) && !fs::is_regular_file(folder, ignored)) return "";
        folder = folder.parent_path();
    }
    while (kind == OutputKind::Folder && !fs::exists(folder, ignored))
        folder = folder.parent_path();
    int cause = 0;
    if (!fs::is_directory(folder, ignored))
        cause = fs::exists(folder, ignored) ? ENOTDIR : ENOENT;
    else if (::access(folder.c_str(), W_OK | X_OK) != 0)
        cause = errno;
    if (cause == 0) return "";
    return fmt::format("{}: {}: {}", output.string(), folder.string(),
                       std::generic_category().message(cause));
}

}  // namespace salvor
