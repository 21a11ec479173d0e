#include "cli/Inputs.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "backup/BackupPaths.h"
#include "backup/BackupStore.h"
#include "cli/Failure.h"

namespace salvor::cli {

namespace fs = std::filesystem;

fs::path requireBackupFolder(const fs::path& named) {
    if (const auto folder = BackupStore::resolve(named)) return *folder;
    std::error_code failed;
    const auto status = fs::status(named, failed);
    const char* cause = !fs::exists(status)        ? "no such folder"
                        : fs::is_directory(status) ? "the folder cannot be read"
                                                   : "is neither a backup folder nor a property "
                                                     "list inside one";
    throw Failure(ExitStatus::SourceUnusable, fmt::format("{}: {}", named.string(), cause));
}

void requireReadableFolder(const fs::path& path) {
    if (isReadableFolder(path)) return;
    std::error_code failed;
    const auto status = fs::status(path, failed);
    const char* cause = !fs::exists(status)        ? "no such folder"
                        : fs::is_directory(status) ? "the folder cannot be read"
                                                   : "is no folder";
    throw Failure(ExitStatus::SourceUnusable, fmt::format("{}: {}", path.string(), cause));
}

void requireReadableFile(const fs::path& path) {
    const auto refuse = [&path](const std::string& cause) {
        throw Failure(ExitStatus::SourceUnusable, fmt::format("{}: {}", path.string(), cause));
    };
    std::error_code failed;
    const auto status = fs::status(path, failed);
    if (fs::is_directory(status)) refuse("is a folder, not a file");
    if (fs::exists(status) && !fs::is_regular_file(status)) refuse("is not a regular file");
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) refuse(std::generic_category().message(errno));
    ::close(fd);
}

SqLiteTableSignatures readSignatures(const fs::path& path, const Console& console) {
    requireReadableFile(path);
    SqLiteTableSignatures signatures;
    const auto wrong = signatures.loadSignatures(path);
    if (!wrong.empty()) console.warning(fmt::format("{}: {}", path.string(), wrong));
    return signatures;
}

}  // namespace salvor::cli
