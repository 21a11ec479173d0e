#include "device/BackupFolderBridge.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include "util/StringUtils.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

bool holdsPropertyLists(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(folder / "Info.plist", ignored) ||
           fs::exists(folder / "Manifest.plist", ignored);
}

/// The folders in `parent` with this name whatever its letters, the lower-case one first.
std::vector<fs::path> foldersNamed(const fs::path& parent, const std::string& lowerName) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator it(parent, error), end; !error && it != end; it.increment(error)) {
        std::error_code ignored;
        if (StringUtils::lowerCase(it->path().filename().string()) == lowerName &&
            it->is_directory(ignored))
            found.push_back(it->path());
    }
    std::sort(found.begin(), found.end(), std::greater<>());
    return found;
}

/// The identifier as the name of one folder, whatever it is.
std::string folderNameOf(const std::string& udid) {
    std::string name = StringUtils::lowerCase(udid);
    std::replace(name.begin(), name.end(), '/', '_');
    if (name == "." || name == "..") std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

}  // namespace

bool namesFolder(const std::string& udid) {
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    return !udid.empty() && folderNameOf(udid) == StringUtils::lowerCase(udid) &&
           udid.front() != '-' && std::none_of(udid.begin(), udid.end(), isControl);
}

fs::path folderOfDeviceBackup(const fs::path& root, const std::string& udid) {
    const std::string name = folderNameOf(udid);
    const auto folders = foldersNamed(root, name);
    for (const auto& folder : folders) {
        if (holdsPropertyLists(folder)) return folder;
        for (const auto& deeper : foldersNamed(folder, name)) {
            if (holdsPropertyLists(deeper)) return deeper;
        }
    }
    return folders.empty() ? root / name : folders.front();
}

}  // namespace salvor
