#include "carving/deep/PageView.h"

#include <algorithm>
#include <array>

#include "carving/format/BigEndian.h"

namespace salvor::deep {
namespace {

// A freeblock, a cell: nothing of use is shorter.
constexpr std::uint32_t kShortest = 4;

constexpr std::array<const char*, 9> kSpaces = {"gap",       "freeblock", "unclaimed",
                                                "free-list", "trunk",     "overflow",
                                                "orphan",    "old-cell",  "old-page"};

bool isTree(PageUse use) {
    return use == PageUse::TableTree || use == PageUse::IndexTree;
}

}  // namespace

const char* toString(Space space) {
    return kSpaces.at(static_cast<std::size_t>(space));
}

Space PageView::spaceAt(std::uint32_t offset) const {
    if (!where.current && where.file == ImageFile::Main && use == PageUse::None)
        return Space::Orphan;
    if (!current) {
        const auto inside = [&](const Cell& cell) {
            return offset >= cell.start && offset < cell.end;
        };
        return std::any_of(oldCells.begin(), oldCells.end(), inside) ? Space::OldCell
                                                                     : Space::OldPage;
    }
    switch (use) {
        case PageUse::FreeLeaf:
            return Space::FreeList;
        case PageUse::Trunk:
            return Space::Trunk;
        case PageUse::Overflow:
            return Space::Overflow;
        case PageUse::None:
            return Space::Orphan;
        default:
            break;
    }
    for (const ByteRange& block : chain)
        if (offset >= block.start && offset < block.end) return Space::Freeblock;
    return cellStarts.empty() || offset < cellStarts.front() ? Space::Gap : Space::Unclaimed;
}

void PageViewer::look(const PageImage& image, std::uint32_t number, PageView& view) {
    const std::uint32_t usable = store_.layout().usable;
    const Bytes whole = store_.bytes(image);
    view.image = number;
    view.where = image;
    view.current = image.current;
    view.bytes = slice(whole, 0, usable);
    const auto use = uses_.of(image.page);
    view.use = use.use;
    view.owner = use.table;
    view.node.reset();
    view.ranges.clear();
    view.oldCells.clear();
    view.chain.clear();
    view.cellStarts.clear();
    view.hasRowIds = view.ofIndex = false;
    if (use.use == PageUse::PointerMap || use.use == PageUse::LockByte) return;

    const auto size = static_cast<std::uint32_t>(view.bytes.size());
    if (view.current && (use.use == PageUse::Trunk || use.use == PageUse::Overflow)) {
        const std::uint32_t end = uses_.contentEnd(image.page);
        if (end != 0 && end < size) view.ranges.push_back({std::max(end, 8u), size});
    } else {
        view.node = BtreePage::read(view.bytes, image.page, usable);
        if (view.node && !(view.current && isTree(use.use)) && !view.node->isSound())
            view.node.reset();
        if (view.node) {
            lookAtNode(view);
        } else if (size > view.firstOffset()) {
            view.ranges.push_back({view.firstOffset(), size});
        }
    }
}

void PageViewer::lookAtNode(PageView& view) {
    view.ofIndex = !view.node->isTable();
    readCells(view);
    readChain(view);
    collectRanges(view);
}

void PageViewer::readCells(PageView& view) {
    const BtreePage& node = *view.node;
    const bool seen = view.current && isTree(view.use);
    const auto size = static_cast<std::uint32_t>(view.bytes.size());
    claimed_.clear();
    for (std::uint32_t i = 0; i < node.cells(); ++i) {
        const auto cell = node.cellAt(node.cellPointer(i));
        if (!cell) continue;
        claimed_.push_back({cell->start, std::min(cell->end, size)});
        if (node.type() == BtreePage::LeafTable) {
            view.lowestRowId =
                view.hasRowIds ? std::min(view.lowestRowId, cell->rowId) : cell->rowId;
            view.highestRowId =
                view.hasRowIds ? std::max(view.highestRowId, cell->rowId) : cell->rowId;
            view.hasRowIds = true;
        }
        if (!seen && node.type() != BtreePage::InteriorTable) view.oldCells.push_back(*cell);
    }
}

void PageViewer::readChain(PageView& view) {
    const auto size = static_cast<std::uint32_t>(view.bytes.size());
    std::uint32_t at = view.node->firstFreeblock();
    // SQLite keeps the chain rising; one that does not rise is broken from there.
    std::uint32_t least = view.node->pointersEnd();
    while (at >= least && size >= kShortest && at <= size - kShortest) {
        const std::uint32_t length = bigEndian16(view.bytes, at + 2);
        if (length < kShortest || length > size - at) break;
        view.chain.push_back({at, at + length});
        least = at + length;
        at = bigEndian16(view.bytes, at);
    }
}

void PageViewer::collectRanges(PageView& view) {
    const auto size = static_cast<std::uint32_t>(view.bytes.size());
    const auto byStart = [](const ByteRange& a, const ByteRange& b) { return a.start < b.start; };
    std::sort(claimed_.begin(), claimed_.end(), byStart);
    std::uint32_t at = std::max(view.node->pointersEnd(), view.firstOffset());
    for (const ByteRange& cell : claimed_) {
        view.cellStarts.push_back(cell.start);
        if (cell.start >= at + kShortest) view.ranges.push_back({at, cell.start});
        at = std::max(at, cell.end);
    }
    if (size >= at + kShortest) view.ranges.push_back({at, size});
}

}  // namespace salvor::deep
