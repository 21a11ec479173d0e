#include "backup/BackupStore.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "backup/BackupInfoReader.h"
#include "backup/BackupPaths.h"
#include "backup/BackupSource.h"
#include "util/FileUtils.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

constexpr std::array kTellTales{"Info.plist", "Manifest.plist", "Manifest.mbdb", "Manifest.db"};

std::filesystem::path fromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? std::filesystem::path(value) : std::filesystem::path();
}

std::int64_t modifiedAt(const std::filesystem::path& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? static_cast<std::int64_t>(info.st_mtime) : 0;
}

std::int64_t lastModified(const std::filesystem::path& folder) {
    std::int64_t newest = modifiedAt(folder);
    for (const char* name : {"Info.plist", "Manifest.plist", "Status.plist"}) {
        newest = std::max(newest, modifiedAt(folder / name));
    }
    return newest;
}

BackupEntry describe(const std::filesystem::path& folder) {
    BackupInfo info = readBackupInfo(folder);
    return {folder, std::move(info.device), info.folderBytes,
            info.madeAt ? *info.madeAt : lastModified(folder)};
}

bool isPropertyList(const std::filesystem::path& file) {
    return StringUtils::lowerCase(file.extension().string()) == ".plist";
}

}  // namespace

std::filesystem::path BackupStore::homeFolder() {
    auto home = fromEnvironment("HOME");
    if (!home.empty()) return home;
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr ? std::filesystem::path(user->pw_dir) : std::filesystem::path("/");
}

std::filesystem::path BackupStore::standardLocation() {
    return homeFolder() / "Library/Application Support/MobileSync/Backup/";
}

std::vector<std::filesystem::path> BackupStore::usualLocations() {
    // The other system's software writes below the user's profile, which may be mounted as a home.
    constexpr auto kRoaming = "Apple Computer/MobileSync/Backup";
    constexpr auto kProfile = "Apple/MobileSync/Backup";
    std::vector<std::filesystem::path> locations{
        standardLocation(), homeFolder() / "AppData/Roaming" / kRoaming, homeFolder() / kProfile};
    const std::pair<const char*, const char*> named[] = {{"APPDATA", kRoaming},
                                                         {"USERPROFILE", kProfile}};
    for (const auto& [variable, place] : named) {
        const auto parent = fromEnvironment(variable);
        if (parent.empty()) continue;
        const auto location = parent / place;
        if (std::find(locations.begin(), locations.end(), location) == locations.end())
            locations.push_back(location);
    }
    return locations;
}

bool BackupStore::looksLikeBackup(const std::filesystem::path& folder) {
    return std::any_of(kTellTales.begin(), kTellTales.end(), [&](const char* name) {
        return findIgnoringCase(folder, name).has_value();
    });
}

std::vector<BackupEntry> BackupStore::listBackups(const std::filesystem::path& root) {
    std::vector<BackupEntry> found;
    for (const auto& folder : backupFolders(root)) found.push_back(describe(folder));
    return found;
}

std::vector<std::filesystem::path> BackupStore::backupFolders(const std::filesystem::path& root) {
    if (looksLikeBackup(root)) return {root};
    std::vector<std::filesystem::path> found;
    for (const auto& entry : FileUtils::entriesOf(root)) {
        if (!entry.isFile && looksLikeBackup(root / entry.name)) found.push_back(root / entry.name);
    }
    return found;
}

std::vector<std::filesystem::path> BackupStore::closedFolders(const std::filesystem::path& root) {
    const auto isClosed = [](const std::filesystem::path& folder) {
        std::error_code ignored;
        return std::filesystem::is_directory(folder, ignored) && !isReadableFolder(folder);
    };
    if (isClosed(root)) return {root};
    std::vector<std::filesystem::path> closed;
    for (const auto& entry : FileUtils::entriesOf(root)) {
        if (!entry.isFile && isClosed(root / entry.name)) closed.push_back(root / entry.name);
    }
    return closed;
}

std::optional<std::filesystem::path> BackupStore::resolve(const std::filesystem::path& named) {
    std::error_code ignored;
    auto folder = named;
    if (std::filesystem::is_regular_file(named, ignored) && isPropertyList(named)) {
        folder = named.has_parent_path() ? named.parent_path() : std::filesystem::path(".");
    }
    if (!isReadableFolder(folder)) return std::nullopt;
    return folder;
}

std::optional<std::filesystem::path> BackupStore::resolveIndex(const std::filesystem::path& named) {
    std::error_code ignored;
    if (std::filesystem::is_directory(named, ignored)) {
        return findIgnoringCase(named, "Manifest.mbdb");
    }
    if (!std::filesystem::is_regular_file(named, ignored)) return std::nullopt;
    return named;
}

std::optional<std::filesystem::path> BackupStore::databaseIndex(const BackupFiles& files) {
    if (files.own("Manifest.mbdb").state != FileState::Absent) return std::nullopt;
    const auto index = files.own("Manifest.db");
    return index.state == FileState::Absent ? std::nullopt : std::optional(index.path);
}

std::optional<std::filesystem::path> BackupStore::databaseIndex(
    const std::filesystem::path& folder) {
    return databaseIndex(*openBackup(folder));
}

std::vector<std::filesystem::path> BackupStore::olderBackups(const std::filesystem::path& backup,
                                                             const std::string& identifier) {
    std::vector<std::filesystem::path> found;
    for (const auto& root : {backup, backup.parent_path()}) {
        for (const auto& entry : FileUtils::entriesOf(root)) {
            std::error_code failed;
            if (!entry.name.starts_with(identifier)) continue;
            if (!std::filesystem::equivalent(root / entry.name, backup, failed))
                found.push_back(root / entry.name);
        }
    }
    return found;
}

}  // namespace salvor
