#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

namespace salvor {

/// The states that the record loop has been in while it worked on one region. A data start that
/// was corrected backwards can lead the loop back to an offset, and from a state that repeats it
/// would never come away. As long as the offset only grows, remembering is all that is done.
class RecordLoopStates {
  public:
    void begin();
    /// False when the loop was in this state before.
    bool enter(std::int64_t offset, std::int32_t correction, bool rereading, bool dontAttempt);

  private:
    std::vector<std::uint64_t> states_;
    std::unordered_set<std::uint64_t> lookup_;
    std::int64_t highest_ = INT64_MIN;
    std::size_t lookedUp_ = 0;
};

}  // namespace salvor
