#pragma once

#include <filesystem>

#include "export/TickedRows.h"

namespace salvor::cli {

/// Reads a file such as {"messages": [1, 2, 17], "calls": []}: categories by name or code, with the
/// serial numbers of the rows to export. Throws `Failure` (bad arguments) naming the file and what
/// is wrong in it.
TickedSerials readTickedFile(const std::filesystem::path& path);

}  // namespace salvor::cli
