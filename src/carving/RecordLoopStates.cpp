#include "carving/RecordLoopStates.h"

#include <algorithm>

namespace salvor {
namespace {

// Offsets stay within a region and corrections within a few bytes, so one word holds a state.
std::uint64_t pack(std::int64_t offset, std::int32_t correction, bool rereading, bool dontAttempt) {
    return static_cast<std::uint64_t>(offset) << 16 |
           static_cast<std::uint64_t>(static_cast<std::uint8_t>(correction)) << 8 |
           static_cast<std::uint64_t>(rereading) << 1 | static_cast<std::uint64_t>(dontAttempt);
}

}  // namespace

void RecordLoopStates::begin() {
    states_.clear();
    if (!lookup_.empty()) lookup_.clear();
    lookedUp_ = 0;
    highest_ = INT64_MIN;
}

bool RecordLoopStates::enter(std::int64_t offset, std::int32_t correction, bool rereading,
                             bool dontAttempt) {
    const std::uint64_t state = pack(offset, correction, rereading, dontAttempt);
    if (offset <= highest_) {
        lookup_.insert(states_.begin() + static_cast<std::ptrdiff_t>(lookedUp_), states_.end());
        lookedUp_ = states_.size();
        if (lookup_.contains(state)) return false;
    }
    highest_ = std::max(highest_, offset);
    states_.push_back(state);
    return true;
}

}  // namespace salvor
