#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace salvor::cli {

enum class Work { BackingUp, Searching, Saving };

/// How far an export or a report is.
struct SavedSoFar {
    std::uint64_t rowsDone = 0;
    std::uint64_t rowsTotal = 0;
    std::uint64_t filesDone = 0;  ///< pictures and videos
    std::uint64_t filesTotal = 0;
};

/// How far a run is at one moment.
struct ProgressSnapshot {
    std::string step;  ///< what is being done, in words
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;  ///< of the whole scan
    std::uint64_t recordsFound = 0;
    std::chrono::seconds elapsed{0};
    Work work = Work::Searching;
    SavedSoFar saved = {};
};

/// The progress in one line of at most `width` columns: what does not fit is left out, the time
/// first, then the step, bytes and share.
std::string progressLine(const ProgressSnapshot& progress, std::size_t width);

}  // namespace salvor::cli
