#include "app/Sources.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "backup/BackupPaths.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

std::string faultOf(const fs::path& path, const std::string& cause) {
    return path.string() + ": " + cause;
}

/// Why `path` is no readable folder, where something that is none is `otherwise`.
std::string folderFault(const fs::path& path, const char* otherwise) {
    std::error_code failed;
    const auto status = fs::status(path, failed);
    return faultOf(path, !fs::exists(status)        ? "no such folder"
                         : fs::is_directory(status) ? "the folder cannot be read"
                                                    : otherwise);
}

}  // namespace

NamedSource findBackupFolder(const fs::path& named) {
    if (auto folder = BackupStore::resolve(named)) return {std::move(*folder), ""};
    return {named, folderFault(named, "is neither a backup folder nor a property list inside one")};
}

NamedSource findIndexFile(const fs::path& named) {
    std::error_code ignored;
    if (!fs::exists(named, ignored)) return {named, faultOf(named, "no such file or folder")};
    if (fs::is_directory(named, ignored))
        if (auto fault = whyNoFolder(named); !fault.empty()) return {named, std::move(fault)};
    const auto index = BackupStore::resolveIndex(BackupStore::resolve(named).value_or(named));
    if (index) return {*index, whyNoFile(*index)};
    return {named, faultOf(named, "holds no Manifest.mbdb and no Manifest.db")};
}

std::string whyNoFolder(const fs::path& path) {
    return isReadableFolder(path) ? "" : folderFault(path, "is no folder");
}

std::string whyNoFile(const fs::path& path) {
    std::error_code failed;
    const auto status = fs::status(path, failed);
    if (fs::is_directory(status)) return faultOf(path, "is a folder, not a file");
    if (fs::exists(status) && !fs::is_regular_file(status))
        return faultOf(path, "is not a regular file");
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return faultOf(path, std::generic_category().message(errno));
    ::close(fd);
    return "";
}

FoundBackups findBackups(const std::optional<fs::path>& root) {
    FoundBackups found;
    for (const auto& location : root ? std::vector{*root} : BackupStore::usualLocations()) {
        for (auto& entry : BackupStore::listBackups(location))
            found.entries.push_back(std::move(entry));
        for (const auto& folder : BackupStore::closedFolders(location))
            found.faults.push_back(faultOf(folder, "the folder cannot be read"));
    }
    return found;
}

std::string backupsBelow(const fs::path& folder) {
    constexpr std::size_t kMost = 10;
    if (BackupStore::looksLikeBackup(folder)) return "";
    const auto folders = BackupStore::backupFolders(folder);
    std::string text;
    for (std::size_t i = 0; i < std::min(folders.size(), kMost); ++i)
        text += (i == 0 ? "backups below it: " : ", ") + folders[i].string();
    return folders.size() > kMost ? fmt::format("{} and {} more", text, folders.size() - kMost)
                                  : text;
}

BackupDescription describeBackup(const fs::path& folder) {
    BackupDescription described{readBackupInfo(folder), true, ""};
    if (described.info.complete) return described;
    described.isBackup = BackupStore::looksLikeBackup(folder);
    described.fault =
        faultOf(folder, described.isBackup
                            ? "Info.plist or Manifest.plist is missing, unreadable or names no "
                              "version"
                            : "is no backup folder: it holds no Info.plist and no Manifest.plist");
    if (const auto below = backupsBelow(folder); !below.empty()) described.fault += "; " + below;
    return described;
}

Encryption encryptionOf(const fs::path& backup, const DeviceInfo& device) {
    if (readVersionFacts(backup).manifestSaysEncrypted) return Encryption::Yes;
    return device.knownIfEncrypted ? Encryption::No : Encryption::Unknown;
}

const char* encryptionText(Encryption encryption) {
    switch (encryption) {
        case Encryption::No:
            return "no";
        case Encryption::Yes:
            return "yes";
        case Encryption::Unknown:
            break;
    }
    return "unknown";
}

}  // namespace salvor
