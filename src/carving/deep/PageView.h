#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "carving/deep/PageUses.h"
#include "carving/format/BtreePage.h"
#include "carving/format/PageStore.h"

namespace salvor::deep {

/// The kind of space in which a row was found.
enum class Space : std::uint8_t {
    Gap,        ///< between the pointer array and the cell area of a page in use
    Freeblock,  ///< in a block of such a page's free chain
    Unclaimed,  ///< elsewhere on such a page, where no cell lies
    FreeList,   ///< on a page of the free list
    Trunk,      ///< behind the page numbers of a free-list trunk page
    Overflow,   ///< behind the end of a text or blob on its last overflow page
    Orphan,     ///< on a page that nothing leads to
    OldCell,    ///< a cell of an older state of a page
    OldPage,    ///< elsewhere on an older state of a page
};
const char* toString(Space space);

struct ByteRange {
    std::uint32_t start = 0;
    std::uint32_t end = 0;
};

/// One page image prepared for the search: what of it is allocated and what is not.
struct PageView {
    std::uint32_t image = 0;  ///< its number among the images
    PageImage where;
    Bytes bytes;  ///< without the reserved ones
    PageUse use = PageUse::None;
    std::uint16_t owner = kNoTable;
    bool current = false;
    /// A page of an index by use or type: its records look like rows of short tables.
    bool ofIndex = false;
    std::optional<BtreePage> node;  ///< where a sound header stands and counts
    std::vector<ByteRange> ranges;  ///< to be searched, rising
    std::vector<Cell> oldCells;     ///< of the page's own pointer array, when nobody sees them
    std::vector<ByteRange> chain;   ///< its freeblocks, rising
    std::vector<std::uint32_t> cellStarts;  ///< rising
    bool hasRowIds = false;
    std::int64_t lowestRowId = 0;
    std::int64_t highestRowId = 0;

    /// No cell begins before this offset.
    std::uint32_t firstOffset() const { return where.page == 1 ? 108 : 8; }
    Space spaceAt(std::uint32_t offset) const;
};

/// Prepares page images one after another.
class PageViewer {
  public:
    PageViewer(const PageStore& store, const PageUses& uses) : store_(store), uses_(uses) {}

    /// Fills `view`, whose vectors are used again.
    void look(const PageImage& image, std::uint32_t number, PageView& view);

  private:
    void lookAtNode(PageView& view);
    void readCells(PageView& view);
    void readChain(PageView& view);
    void collectRanges(PageView& view);

    const PageStore& store_;
    const PageUses& uses_;
    std::vector<ByteRange> claimed_;
};

}  // namespace salvor::deep
