#pragma once

#include <cstdint>
#include <vector>

#include "plain_buffer.h"
#include "plain_pattern.h"

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
    const PlainPattern* pattern = nullptr;
    std::int64_t taken = 0;
};

/// Tries the patterns one after another, each at every position of the buffer.
class PlainMatcher {
  public:
    explicit PlainMatcher(const std::vector<PlainPattern>& patterns);
    MatchedHeader find(const Buffer& buffer, std::int64_t start) const;

  private:
    bool matchAt(const Buffer& buffer, std::int64_t p, const PlainPattern& pattern,
                 MatchedHeader& info) const;

    std::vector<PlainPattern> patterns_;
};

}  // namespace salvor::reference
