#pragma once

#include <stop_token>

#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/ScanOptions.h"
#include "scan/ScanState.h"

namespace salvor::cli {

/// Shows the table, exports and writes the JSON object, as the options want it. What cannot be
/// written is told in a line of its own and does not keep the rest from being written; the status
/// is then `NotWritten`. `cancelled` ends the export and the JSON object and keeps what has not
/// begun from being written; a JSON file stays as it was.
ExitStatus writeResults(ScanState& state, const ScanOptions& options,
                        const std::stop_token& cancelled, const Console& console);

}  // namespace salvor::cli
