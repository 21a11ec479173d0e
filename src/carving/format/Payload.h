#pragma once

#include <vector>

#include "carving/format/BtreePage.h"
#include "carving/format/OverflowChain.h"
#include "util/Bytes.h"

namespace salvor {

/// The payload of a cell as one piece: a view where it lies on its page, otherwise put together
/// in a buffer that is used again for the next one.
class Payload {
  public:
    /// Gathers the payload; `complete` tells whether all of it was found. No more memory is taken
    /// than the pages of the chain hold.
    Bytes gather(Bytes page, const Cell& cell, std::uint32_t usable, const PageAtTime& pageAt);
    bool complete() const { return complete_; }
    /// The overflow pages, in their order.
    const std::vector<std::uint32_t>& chain() const { return chain_; }

  private:
    std::vector<std::uint8_t> buffer_;
    std::vector<std::uint32_t> chain_;
    bool complete_ = true;
};

}  // namespace salvor
