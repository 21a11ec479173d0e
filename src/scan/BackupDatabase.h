#pragma once

#include <memory>
#include <stop_token>

#include "scan/BackupFiles.h"
#include "scan/ScanState.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// A connection to a database of a backup under the scan's source policy, still to be opened. It
/// keeps the file; one that is not present does not open.
std::shared_ptr<FMDBUtils> backupDatabase(const ScanState& state, BackupFile file,
                                          std::stop_token cancelled = {});

}  // namespace salvor
