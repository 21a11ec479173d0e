#pragma once

#include <cstdint>
#include <vector>

#include "carving/LeadingColumns.h"
#include "util/Bytes.h"

namespace salvor {

/// Where in a region, by blocks of 64 bytes, any header can lie at all: around the bytes of which
/// every header has one.
class RareBlocks {
  public:
    void find(MaskMethod method, const ByteSearch& rare, Bytes region);

    Bytes region() const { return region_; }
    std::size_t count() const { return near_.size(); }
    /// Whether a header may touch this block.
    bool near(std::size_t block) const { return near_[block] != 0; }
    /// How many bytes a varint can be read at; reading it behind them fails.
    std::size_t readable() const { return readable_; }
    /// No header touches the blocks in front of this one.
    std::size_t first() const { return first_; }

  private:
    void markNeighbours();

    Bytes region_;
    std::vector<std::uint8_t> rare_;
    std::vector<std::uint8_t> near_;
    std::size_t readable_ = 0;
    std::size_t first_ = 0;
};

/// For every position of a region, whether a header may begin there as far as its leading checked
/// columns show. A position that is turned down can hold no match; one whose columns lie too near
/// to the end to be read is never turned down, since the failing read counts.
class CandidateMap {
  public:
    /// `rowIds`: also for headers that begin with a row id.
    void build(MaskMethod method, const LeadingColumnTables& columns, bool rowIds,
               const RareBlocks& blocks);

    /// The first position, 0 or more, from `position` on at which a header that begins with one
    /// unchecked byte may stand; a position past the region where there is none.
    std::int64_t nextPlain(std::int64_t position) const { return next(columns_, position + 1) - 1; }
    /// The same for one that begins with a row id and two unchecked bytes.
    std::int64_t nextWithRowId(std::int64_t position) const { return next(rowIds_, position); }

  private:
    using Bits = std::vector<std::uint64_t>;

    void readBlocks(MaskMethod method, const LeadingColumnTables& columns,
                    const RareBlocks& blocks);
    void combineColumns(const RareBlocks& blocks);
    void findRowIds(const RareBlocks& blocks);
    std::int64_t next(const Bits& bits, std::int64_t position) const;

    std::vector<BlockMasks> blocks_;
    Bits columns_;           ///< the first checked column may begin here
    Bits rowIds_;            ///< a row id whose header may fit may begin here
    std::size_t first_ = 0;  ///< the words in front of this one hold nothing
};

}  // namespace salvor
