#pragma once

#include <vector>

#include "carving/deep/Candidate.h"
#include "carving/deep/CellEnds.h"

namespace salvor::deep {

/// Settles which of the candidates of one page image stay. Of two that read the same header the
/// one that weighs more does. Where a cell begins inside another, or a freeblock of the page's own
/// chain, the other one has lost its bytes from there on. What is left is in order of offset.
class Overlaps {
  public:
    void settle(const CellEnds& ends, std::uint32_t pageSize, std::vector<Candidate>& found);

  private:
    bool claim(const Candidate& candidate);
    void cutOverwritten(const CellEnds& ends, std::vector<Candidate>& found) const;

    std::vector<bool> headers_;        ///< bytes of the headers that stay
    std::vector<std::uint32_t> ends_;  ///< by the end of a cell that stays: where its values begin
};

}  // namespace salvor::deep
