#pragma once

#include <filesystem>
#include <string>

namespace salvor {

/// The folder in which a device's backup lies below `root`: the one named by its identifier in
/// lower case. A helper that names it in the identifier's own letters, or puts it one level
/// deeper, is followed here and nowhere else; nothing is renamed, since the helper goes on from
/// what it finds. Where there is none yet, the path in lower case. Never leads out of `root`.
std::filesystem::path folderOfDeviceBackup(const std::filesystem::path& root,
                                           const std::string& udid);

/// Whether the identifier can name a folder as it stands: a device could call itself
/// "../elsewhere", and a helper follow it, or like an option of the helper.
bool namesFolder(const std::string& udid);

}  // namespace salvor
