#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace salvor::cli {

/// How far a scan is at one moment.
struct ProgressSnapshot {
    std::string step;  ///< what is being done, in words
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;  ///< of the files opened so far
    std::uint64_t recordsFound = 0;
    std::chrono::seconds elapsed{0};
    bool searching = true;  ///< for deleted records: their number is told
};

/// The progress in one line of at most `width` columns: what does not fit is left out, the time
/// first, then step and bytes.
std::string progressLine(const ProgressSnapshot& progress, std::size_t width);

}  // namespace salvor::cli
