#include "backup/FolderBackupFiles.h"

#include <unistd.h>
#include <utility>

#include "backup/BackupPaths.h"
#include "backup/FolderFileList.h"
#include "util/FileUtils.h"

namespace salvor {
namespace {

BackupFile toOpen(FileFacts facts) {
    if (facts && ::access(facts.place.c_str(), R_OK) != 0) facts.state = FileState::Unreadable;
    return {facts.state, std::move(facts.place), nullptr};
}

}  // namespace

std::filesystem::path FolderBackupFiles::nested(const std::string& storedName) const {
    return folder_ / storedName.substr(0, 2) / storedName;
}

FileFacts FolderBackupFiles::find(const std::string& storedName) const {
    if (storedName.empty()) return {FileState::Absent, folder_ / storedName};
    auto flat = factsOf(folder_ / storedName);
    if (flat || storedName.size() < 2) return flat;
    auto deeper = factsOf(nested(storedName));
    if (deeper) return deeper;
    if (flat.state == FileState::Absent) flat.state = deeper.state;
    return flat;
}

BackupFile FolderBackupFiles::open(const std::string& storedName) const {
    return toOpen(find(storedName));
}

BackupFile FolderBackupFiles::own(const std::string& name) const {
    return toOpen(factsOf(findIgnoringCase(folder_, name).value_or(folder_ / name)));
}

std::unique_ptr<StoredFileList> FolderBackupFiles::list() const {
    return std::make_unique<FolderFileList>(folder_);
}

std::optional<std::string> FolderBackupFiles::storedNameAt(
    const std::filesystem::path& place) const {
    auto name = place.filename().string();
    if (name.empty() || (place != folder_ / name && place != nested(name))) return std::nullopt;
    // A file in a sub-folder can be hidden by a flat one of its name.
    return find(name).place == place ? std::optional(name) : std::nullopt;
}

std::optional<std::int64_t> FolderBackupFiles::indexedDate(const std::string& storedName) const {
    std::call_once(datesRead_,
                   [this] { dates_ = std::make_unique<IndexDates>(own("Manifest.mbdb").path); });
    return dates_->of(storedName);
}

std::uint64_t FolderBackupFiles::totalBytes() const {
    return FileUtils::directorySize(folder_);
}

}  // namespace salvor
