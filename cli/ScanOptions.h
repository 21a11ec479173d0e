#pragma once

#include <filesystem>
#include <optional>
#include <spdlog/common.h>

#include "app/ResultExport.h"
#include "app/ScanJob.h"
#include "cli/OptionTable.h"

namespace salvor::cli {

/// The options of a scan, from the command line.
struct ScanOptions {
    ScanRequest request;
    std::optional<ExportRequest> exports;
    std::optional<std::filesystem::path> json;  ///< absent also when `jsonOnOut`
    bool jsonOnOut = false;
    bool quiet = false;
    bool progress = true;
    spdlog::level::level_enum logLevel = spdlog::level::warn;
};

extern const CommandTable kScanTable;

/// Throws `Failure` for what can be refused before the scan: values that mean nothing, outputs
/// inside the backup or where nothing can be written.
ScanOptions scanOptionsFrom(const Arguments& given);
/// The same for the backup that is about to be written into `folder`.
ScanOptions scanOptionsFor(const std::filesystem::path& folder, const Arguments& given);

}  // namespace salvor::cli
