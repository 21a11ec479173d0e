#include "tests/support/HashTree.h"

#include <fmt/format.h>
#include <stdexcept>
#include <sys/stat.h>

#include "tools/sample/Digest.h"

namespace salvor {
namespace {

std::string contentOf(const std::filesystem::path& path, mode_t mode) {
    if (S_ISLNK(mode)) return "-> " + std::filesystem::read_symlink(path).string();
    if (S_ISREG(mode)) return sampleDigest(readWholeFile(path));
    return "-";
}

std::string stateOf(const std::filesystem::path& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) {
        throw std::runtime_error("cannot look at " + path.string());
    }
    // A folder's size is the file system's business.
    const auto size = S_ISDIR(info.st_mode) ? 0 : info.st_size;
    return fmt::format("mode {:o} owner {}:{} size {} mtime {}.{:09} ctime {}.{:09} {}",
                       info.st_mode, info.st_uid, info.st_gid, size, info.st_mtim.tv_sec,
                       info.st_mtim.tv_nsec, info.st_ctim.tv_sec, info.st_ctim.tv_nsec,
                       contentOf(path, info.st_mode));
}

}  // namespace

TreeState hashTree(const std::filesystem::path& folder) {
    TreeState state;
    state["."] = stateOf(folder);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        state[entry.path().lexically_relative(folder).string()] = stateOf(entry.path());
    }
    return state;
}

}  // namespace salvor
