#pragma once

#include <cstdint>
#include <vector>

#include "carving/deep/Candidate.h"
#include "carving/deep/PageView.h"

namespace salvor::deep {

/// Where on a page something begins or ends: blocks of its chain, cells, freeblock headers that
/// once were true. A freed cell ends at one of these, and often begins at one.
class CellEnds {
  public:
    /// Marks what the page itself tells.
    void begin(const PageView& view);
    /// Marks the beginnings and ends of cells that were found whole.
    void add(const std::vector<Candidate>& found);
    /// Marks the ends of cells that lost their beginning, where a block's own end bears them out.
    void addRows(const std::vector<Candidate>& found);

    /// Offsets of everything in the unallocated bytes that reads as a freeblock header, rising.
    const std::vector<std::uint32_t>& headers() const { return headers_; }
    bool beginsBlock(std::uint32_t offset) const { return has(offset, kChain); }
    bool isBoundary(std::uint32_t offset) const { return has(offset, kBoundary | kChain); }
    /// Whether a cell or what became of one begins there.
    bool beginsCell(std::uint32_t offset) const { return has(offset, kCell | kHeader); }
    /// The four bytes before are zero, as before the lowest cell of a page.
    bool followsZeros(std::uint32_t offset) const;
    /// A block of the page's own chain that begins inside; 0 without.
    std::uint32_t blockInside(std::uint32_t start, std::uint32_t end) const;
    /// What it says for a cell freed at `start` that it ends at `end`, in bits; 0 for nothing.
    double endWeight(std::uint32_t start, std::uint32_t end) const;
    /// The ends that a cell freed at `start` may have behind `least`, at most 132 bytes on, with
    /// their weights.
    struct End {
        std::uint32_t at = 0;
        double weight = 0;
    };
    void endsOf(std::uint32_t start, std::uint32_t least, std::vector<End>& ends) const;

  private:
    enum Mark : std::uint8_t {
        kHeader = 1,
        kCell = 2,
        kRangeEnd = 4,
        kChain = 8,
        kBoundary = 16,
    };
    bool has(std::uint32_t offset, unsigned marks) const {
        return offset < marks_.size() && (marks_[offset] & marks) != 0;
    }
    void mark(std::uint32_t offset, unsigned marks) {
        if (offset < marks_.size()) marks_[offset] |= static_cast<std::uint8_t>(marks);
    }

    const PageView* view_ = nullptr;
    std::vector<std::uint8_t> marks_;
    std::vector<std::uint32_t> headers_;
};

}  // namespace salvor::deep
