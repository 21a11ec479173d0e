#pragma once

#include <algorithm>
#include <cstdint>

#include "scan/ScanState.h"

namespace salvor {

/// The share of one pass over a file in a scan's progress. Adds to the part done whatever is
/// missing at its end, so that it grows by the file's size however the pass ends.
class CarvingProgress {
  public:
    CarvingProgress(ScanProgress& progress, std::uint64_t bytes)
        : progress_(progress), left_(bytes) {}
    CarvingProgress(const CarvingProgress&) = delete;
    CarvingProgress& operator=(const CarvingProgress&) = delete;
    ~CarvingProgress() { advance(left_); }

    /// Passes may cover bytes twice; the part done never exceeds the file.
    void advance(std::uint64_t bytes) {
        const std::uint64_t step = std::min(bytes, left_);
        left_ -= step;
        pending_ += step;
        if (pending_ < kStep && left_ > 0) return;
        progress_.bytesDone += pending_;
        pending_ = 0;
    }

  private:
    // Small pages would otherwise touch the shared counter too often.
    static constexpr std::uint64_t kStep = 4096;

    ScanProgress& progress_;
    std::uint64_t left_;
    std::uint64_t pending_ = 0;
};

}  // namespace salvor
