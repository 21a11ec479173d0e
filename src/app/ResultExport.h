#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "export/ExportWatch.h"
#include "export/TickedRows.h"

namespace salvor {

/// What of a scan's lists is to be exported, and where.
struct ExportRequest {
    std::filesystem::path folder;  ///< a new folder is made in it
    std::string suffix = ".csv";
    std::optional<TickedSerials> ticked;  ///< these rows alone
};

/// What became of an export, for a person.
struct ExportReport {
    std::filesystem::path folder;  ///< the new folder; empty when it could not be made
    bool whole = false;            ///< everything that could be read is in it
    bool cancelled = false;
    std::vector<std::string> errors;      ///< a text for each file that could not be written
    std::vector<std::string> unreadable;  ///< one for each picture that could not be read
    std::vector<std::string> notices;     ///< what is not in the folder although all went well
};

/// Exports the lists of `state`, which no scan fills meanwhile; ticks its rows as the request says.
ExportReport exportResults(ScanState& state, const ExportRequest& request,
                           const ExportWatch& watch = {});

}  // namespace salvor
