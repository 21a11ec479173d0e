#pragma once

#include <cstdint>
#include <vector>

namespace salvor {

/// Remembers which offsets of a page its freeblock chain has visited, so that a chain that
/// returns to one of them ends. Marks are numbered per chain: nothing is cleared between pages.
class FreeblockChain {
  public:
    void begin() {
        if (marks_.empty()) marks_.resize(std::size_t{UINT16_MAX} + 1);
        ++chain_;
    }
    /// False when this chain was at `offset` before.
    bool visit(std::uint16_t offset) {
        if (marks_[offset] == chain_) return false;
        marks_[offset] = chain_;
        return true;
    }

  private:
    std::vector<std::uint64_t> marks_;
    std::uint64_t chain_ = 0;
};

}  // namespace salvor
