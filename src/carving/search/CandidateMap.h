#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "carving/search/LeadingColumns.h"
#include "carving/search/RegionMasks.h"

namespace salvor {

/// The number, in the matcher's sets of bytes, of the set that each leading column may begin with.
using LeadingSets = std::array<std::size_t, LeadingColumns::kColumns>;

/// For every position of a region, whether a header may begin there as far as its leading checked
/// columns show. A position that is turned down can hold no match; one whose columns lie too near
/// to the end to be read is never turned down, since the failing read counts.
class CandidateMap {
  public:
    /// `rowIds`: also for headers that begin with a row id.
    void build(const LeadingSets& columns, bool rowIds, const RegionMasks& masks);

    /// The first position, 0 or more, from `position` on at which a header that begins with one
    /// unchecked byte may stand; a position past the region where there is none.
    std::int64_t nextPlain(std::int64_t position) const { return next(columns_, position + 1) - 1; }
    /// The same for one that begins with a row id and two unchecked bytes.
    std::int64_t nextWithRowId(std::int64_t position) const { return next(rowIds_, position); }

  private:
    using Bits = std::vector<std::uint64_t>;

    void combineColumns(const LeadingSets& columns, const RegionMasks& masks);
    void findRowIds(const RegionMasks& masks);
    std::int64_t next(const Bits& bits, std::int64_t position) const;

    Bits columns_;           ///< the first checked column may begin here
    Bits rowIds_;            ///< a row id whose header may fit may begin here
    std::size_t first_ = 0;  ///< the words in front of this one hold nothing
};

}  // namespace salvor
