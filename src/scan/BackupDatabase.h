#pragma once

#include <memory>
#include <stop_token>

#include "scan/BackupFiles.h"
#include "scan/ScanState.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// A connection to a database of a backup under the scan's source policy, still to be opened. It
/// keeps the file; one that is not present does not open. How its statements end is kept in the
/// scan's `fileOutcomes`.
std::shared_ptr<FMDBUtils> backupDatabase(ScanState& state, BackupFile file,
                                          std::stop_token cancelled = {});

/// The same for a watch of the caller's own, or for none: look-ups for carved rows and comparisons
/// with them say nothing of what a category holds.
std::shared_ptr<FMDBUtils> backupDatabase(const ScanState& state, BackupFile file,
                                          std::shared_ptr<DatabaseWatch> watch,
                                          std::stop_token cancelled = {});

}  // namespace salvor
