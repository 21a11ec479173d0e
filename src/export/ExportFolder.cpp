#include "export/ExportFolder.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "util/FileUtils.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

constexpr int kMostFolders = 10000;
constexpr mode_t kOwnerAlone = 0700;

bool isTaken(const fs::path& path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type() != fs::file_type::not_found;
}

/// Renames a folder without replacing anything; 0 or the error.
int renameToFree(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // Not every file system can do that. What is made here is empty, and so may be replaced.
    if (::mkdir(to.c_str(), kOwnerAlone) != 0) return errno;
    if (::rename(from.c_str(), to.c_str()) == 0) return 0;
    const int failure = errno;
    ::rmdir(to.c_str());
    return failure;
}

}  // namespace

fs::path ExportFolder::numbered(int number) const {
    return target_ / (number == 1 ? name_ : fmt::format("{} ({})", name_, number));
}

int ExportFolder::make(const fs::path& target, const std::string& name) {
    target_ = target;
    name_ = name;
    path_ = numbered(1);
    if (const int failure = FileUtils::makePrivateFolders(target); failure != 0) return failure;
    for (int number = 1; number <= kMostFolders; ++number) {
        if (isTaken(numbered(number))) continue;
        auto part = numbered(number);
        part += ".part";
        if (::mkdir(part.c_str(), kOwnerAlone) == 0) {
            path_ = std::move(part);
            return 0;
        }
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

int ExportFolder::finish() {
    int failure = EEXIST;
    for (int number = 1; failure == EEXIST && number <= kMostFolders; ++number) {
        auto whole = numbered(number);
        failure = renameToFree(path_, whole);
        if (failure == 0) path_ = std::move(whole);
    }
    return failure;
}

}  // namespace salvor
