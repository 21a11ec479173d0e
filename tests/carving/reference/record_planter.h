#pragma once

#include <cstdint>
#include <vector>

#include "pattern_generator.h"
#include "plain_buffer.h"
#include "random_source.h"

namespace salvor::reference {

void append(Buffer& buffer, const Buffer& more);
/// The shortest encoding, or a longer one of `length` bytes.
Buffer encodeVarint(std::uint64_t value, std::size_t length = 0);

/// Writes records that fit a pattern, or nearly, and fills stretches of bytes with them.
class RecordPlanter {
  public:
    RecordPlanter(RandomSource& random, std::vector<PlannedPattern> patterns);

    /// A record as its bytes; `gapBeforeData` bytes stand between header and data.
    Buffer record(std::int64_t gapBeforeData);
    /// `length` bytes of junk and records; records are shifted as freeblocks want it when asked.
    Buffer fill(std::int64_t length, bool shifted);

  private:
    std::uint64_t serialType(const std::vector<int>& codes);
    Buffer data(std::uint64_t serialType);
    Buffer text(std::int64_t length);
    Buffer junk();
    Buffer rowId();
    Buffer varint(std::uint64_t value);
    Buffer header(const PlannedPattern& pattern, std::vector<std::uint64_t>& types);
    void endWithLongRowId(Buffer& region);
    void endWithCutBlob(Buffer& region);
    void stageMoveBack(Buffer& region);
    static void endWith(Buffer& region, const Buffer& tail);

    RandomSource& random_;
    std::vector<PlannedPattern> patterns_;
    int dashes_ = 0;          ///< per cent
    bool earlyDash_ = false;  ///< first dashes ask for the farthest move towards the front
};

}  // namespace salvor::reference
