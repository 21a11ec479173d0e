#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "export/Exporter.h"
#include "util/Date.h"
#include "util/DateUtils.h"

namespace salvor {

class ScanState;

/// What an export command did. Nothing is thrown; every file that could not be written is named
/// with its cause, and the other files are there.
struct ExportSummary {
    std::filesystem::path folder;  ///< the new folder; empty when it could not be made
    bool whole = false;            ///< it has its name, else "NAME.part"
    std::vector<ExportedFile> written;
    std::vector<ExportedFile> failed;      ///< could not be written
    std::vector<ExportedFile> unreadable;  ///< pictures and videos that the source does not give
    std::vector<std::string> omitted;      ///< categories with rows that this command never writes
    std::size_t missingMedia = 0;          ///< pictures and videos whose file the source lacks
    bool cancelled = false;                ///< `written` tells what is there all the same
};

/// The folder "<device name> - yyyy-MM-dd hh.mm a" in `target` (made when missing), with a file
/// per category that has rows, named by the category and `suffix`, copies of the pictures and
/// videos (live ones, then deleted ones) with their dates, and the device-information file. A
/// folder of that name that exists already gives "... (2)" and so on. Until everything is in it
/// that could be read the folder is called "NAME.part"; a cancelled export, and one with a file
/// that could not be written, leave it so. Where there is no room for all pictures and videos none
/// is copied.
ExportSummary exportAll(const ScanState& state, const std::filesystem::path& target,
                        const std::string& suffix, Date now = DateUtils::now(),
                        const ExportWatch& watch = {});

/// As `exportAll` with the ticked rows alone; applications, user dictionary, maps and the device
/// information are left out, and ticked WhatsApp rows yield no file.
ExportSummary exportTicked(const ScanState& state, const std::filesystem::path& target,
                           const std::string& suffix, Date now = DateUtils::now(),
                           const ExportWatch& watch = {});

}  // namespace salvor
