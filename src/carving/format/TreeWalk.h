#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "carving/format/BtreePage.h"
#include "carving/format/PageStore.h"

namespace salvor {

/// Which pages a walk has been to, so that no page is walked twice however pages point.
using PageSet = std::vector<bool>;

/// Walks the b-tree below `root` as a reader sees it, from left to right, and shows each page that
/// has not been visited; `visit` returns false to end the walk. Pages that are none are passed by.
void walkTree(const PageStore& store, std::uint32_t root, PageSet& visited,
              const std::function<bool(std::uint32_t page, const BtreePage& node)>& visit);

/// The cell of the row `rowId` in the table below `root`, with the page it lies on; page 0 when
/// there is no such row.
struct FoundCell {
    std::uint32_t page = 0;
    Cell cell;
};
FoundCell findRow(const PageStore& store, std::uint32_t root, std::int64_t rowId);

/// Walks the free list: every trunk page with the number of leaves it names, and every leaf.
void walkFreeList(
    const PageStore& store,
    const std::function<void(std::uint32_t page, bool trunk, std::uint32_t leaves)>& visit);

}  // namespace salvor
