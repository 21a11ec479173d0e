#pragma once

#include <stop_token>

#include "scan/ScanState.h"

namespace salvor {

/// Empties the lists of accounts, applications, map searches and keyboard words.
void clearDeviceLists(ScanState& state);

/// Fills them from the files that the scan's database names tell. A file that is missing or
/// broken leaves its list empty; applications are then those that the backup's manifest names.
void readDeviceLists(ScanState& state, const std::stop_token& cancelled);

}  // namespace salvor
