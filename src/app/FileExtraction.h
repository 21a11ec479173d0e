#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "scan/BackupFiles.h"
#include "scan/BackupIndex.h"

namespace salvor {

/// Which files of a backup to write, and where.
struct ExtractionRequest {
    std::filesystem::path folder;       ///< exists; a file comes to folder/domain/path
    std::optional<std::string> domain;  ///< this domain alone
    /// Paths as a shell matches them, "*" also across "/"; without any every file.
    std::vector<std::string> patterns;
};

struct ExtractionSummary {
    std::size_t written = 0;
    std::uint64_t bytes = 0;
    std::size_t there = 0;    ///< lies there already and stays as it is
    std::size_t missing = 0;  ///< listed, but not in the backup
    std::size_t locked = 0;   ///< its key is not to be had
    std::size_t refused = 0;  ///< its name would leave the folder
    std::size_t failed = 0;   ///< could not be read or written
    bool cancelled = false;
};

/// Writes the files of a backup that `index` lists, with their dates, and nothing over a file that
/// is there. No name and no link leads out of the folder. `tell` gets a line for each file that is
/// refused or fails.
ExtractionSummary extractFiles(const BackupFiles& files, const BackupIndex& index,
                               const ExtractionRequest& request, const std::stop_token& stop,
                               const std::function<void(const std::string&)>& tell);

}  // namespace salvor
