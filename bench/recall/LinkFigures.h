#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "scan/ScanState.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {

/// Carved rows of a link table: how many are true, how many were read out of something else.
struct LinkCount {
    std::size_t right = 0;
    std::size_t wrong = 0;
};
using LinkFigures = std::map<std::string, LinkCount>;  ///< by signature table

/// Runs the carvers of the link tables (chats, handles, joins) over the messages of a sample of
/// iOS 6 or later and holds every record against its truth.
LinkFigures measureLinks(const SampleBackup& sample, ScanState& state);

}  // namespace salvor
