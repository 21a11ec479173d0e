#pragma once

#include <cstdint>
#include <vector>

#include "engine_events.h"
#include "literal_buffer.h"
#include "literal_pattern.h"

namespace salvor::reference {

struct HeaderEntry {
    std::int64_t serialType = 0;
    std::int64_t length = 0;
};

/// A byte position that fits a pattern.
struct MatchedHeader {
    bool valid = false;
    std::int64_t start = 0;
    std::vector<HeaderEntry> entries;
    std::int64_t rowId = 0;
    const LiteralPattern* pattern = nullptr;
    std::int64_t taken = 0;
    bool cutOff = false;
};

/// Tries the patterns one after another, each at every position of the buffer.
class LiteralMatcher {
  public:
    LiteralMatcher(const std::vector<LiteralPattern>& patterns, Events& events);
    MatchedHeader find(const Buffer& buffer, std::int64_t start) const;

  private:
    bool matchAt(const Buffer& buffer, std::int64_t p, const LiteralPattern& pattern,
                 MatchedHeader& info) const;

    std::vector<LiteralPattern> patterns_;
    Events& events_;
};

}  // namespace salvor::reference
