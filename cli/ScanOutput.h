#pragma once

#include <stop_token>

#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/ScanDisplay.h"
#include "cli/ScanOptions.h"
#include "scan/ScanState.h"

namespace salvor::cli {

/// Shows the table, exports and writes the JSON object, as the options want it; `display` tells how
/// far that is. What cannot be written is told in a line of its own and does not keep the rest from
/// being written; the status is then `NotWritten`, else `NotAllRead` when a picture cannot be read.
/// `cancelled` ends the export or the JSON object and leaves out what would follow;
/// a JSON file stays as it was.
ExitStatus writeResults(ScanState& state, const ScanOptions& options,
                        const std::stop_token& cancelled, const Console& console,
                        ScanDisplay& display);

}  // namespace salvor::cli
