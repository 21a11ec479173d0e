#include "backup/extraction/WorkFolder.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "backup/BackupPaths.h"
#include "util/FileUtils.h"
#include "util/MappedFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

constexpr auto kMarkerName = ".salvor-work-folder";
constexpr std::string_view kMarkerText =
    "Made by Salvor. The next scan with the same work folder removes this folder.\n";

bool carriesMarker(const fs::path& folder) {
    const auto marker = MappedFile::open(folder / kMarkerName);
    if (!marker || marker->bytes().size() != kMarkerText.size()) return false;
    return std::equal(kMarkerText.begin(), kMarkerText.end(), marker->bytes().begin());
}

std::error_code madePrivately(const fs::path& folder) {
    return {FileUtils::makePrivateFolders(folder), std::generic_category()};
}

}  // namespace

WorkFolder::WorkFolder(std::optional<fs::path> parent) : private_(!parent) {
    if (parent) parent_ = std::move(*parent);
}

WorkFolder::~WorkFolder() = default;

fs::path WorkFolder::path() const {
    return private_ && parent_.empty() ? fs::path() : parent_ / "Temp";
}

std::string WorkFolder::refusal(const fs::path& backup) const {
    const fs::path temp = path();
    if (temp.empty()) return {};
    if (liesInside(temp, backup) || liesInside(backup, temp)) {
        return "the work folder " + temp.string() + " and the backup " + backup.string() +
               " lie inside one another";
    }
    std::error_code failed;
    const auto status = fs::symlink_status(temp, failed);
    if (status.type() == fs::file_type::not_found) return {};
    if (status.type() == fs::file_type::directory && carriesMarker(temp)) return {};
    return temp.string() + " is there already and was not made by Salvor";
}

std::string WorkFolder::makePrivateParent(const fs::path& backup) {
    std::string tried;
    for (const auto& candidate : PrivateFolder::usualParents()) {
        tried += (tried.empty() ? "" : " or ") + candidate.string();
        if (liesInside(candidate, backup)) continue;
        privateFolder_ = PrivateFolder::make(candidate);
        if (privateFolder_ == nullptr) continue;
        parent_ = privateFolder_->path();
        return {};
    }
    return "cannot make a work folder in " + tried;
}

std::string WorkFolder::recreate(const fs::path& backup) {
    if (private_ && parent_.empty()) {
        if (auto failure = makePrivateParent(backup); !failure.empty()) return failure;
    }
    if (auto reason = refusal(backup); !reason.empty()) return reason;
    std::error_code failed;
    fs::remove_all(path(), failed);
    if (!failed) failed = madePrivately(path());
    if (failed) return "cannot make " + path().string() + ": " + failed.message();
    const std::string cause = FileUtils::writeAtomically(path() / kMarkerName, kMarkerText);
    if (!cause.empty()) return "cannot write into " + path().string() + ": " + cause;
    for (const auto& folder : {photos(), videos(), extract()}) {
        if (!failed) failed = madePrivately(folder);
    }
    if (failed) return "cannot make the folders in " + path().string() + ": " + failed.message();
    made_ = true;
    return {};
}

}  // namespace salvor
