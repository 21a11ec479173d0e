#pragma once

#include <filesystem>
#include <string>

namespace salvor {

/// "" or why nothing may be written to `output`: it lies inside the backup, by whatever links it
/// is reached. Neither has to exist.
std::string whyInsideBackup(const std::filesystem::path& output,
                            const std::filesystem::path& backup);

/// What is to be written at a place.
enum class OutputKind { File, Folder };

/// "" or why nothing can be written to `output`: better said before a scan than after it. Folders
/// are made when missing, those that lead to a file are not.
std::string whyNoRoom(const std::filesystem::path& output, OutputKind kind);

}  // namespace salvor
