#include "carving/deep/CellEnds.h"

#include <algorithm>

#include "carving/deep/CellSearch.h"
#include "carving/format/BigEndian.h"

namespace salvor::deep {
namespace {

// Up to three bytes between two cells are too few for a block and merge into the one before.
constexpr std::uint32_t kFragment = 3;
// A cell whose length took one byte ends before that.
constexpr std::uint32_t kReach = 132;

}  // namespace

void CellEnds::begin(const PageView& view) {
    view_ = &view;
    marks_.assign(view.bytes.size() + 1, 0);
    headers_.clear();
    for (const std::uint32_t start : view.cellStarts) mark(start, kCell);
    for (const ByteRange& range : view.ranges) {
        mark(range.start, kBoundary);
        mark(range.end, kRangeEnd | kBoundary);
        const std::uint32_t first = std::max(range.start, view.firstOffset());
        for (std::uint32_t at = first; at + 4 <= range.end; ++at) {
            if (bigEndian<8>(view.bytes, at) == 0 && at + 8 <= range.end) {
                at += 4;
                continue;
            }
            if (!isFreeblockHeader(view.bytes, at)) continue;
            headers_.push_back(at);
            mark(at, kHeader);
        }
    }
    for (const ByteRange& block : view.chain) {
        mark(block.start, kChain);
        mark(block.end, kBoundary);
    }
    std::sort(headers_.begin(), headers_.end());
    headers_.erase(std::unique(headers_.begin(), headers_.end()), headers_.end());
}

void CellEnds::add(const std::vector<Candidate>& found) {
    for (const Candidate& cell : found)
        if (!cell.isHeadless()) {
            mark(cell.start, kCell);
            mark(cell.end, kBoundary);
        }
}

void CellEnds::addRows(const std::vector<Candidate>& found) {
    for (const Candidate& cell : found)
        if (cell.isHeadless() && endWeight(cell.start, cell.end) >= 8) mark(cell.end, kBoundary);
}

bool CellEnds::followsZeros(std::uint32_t offset) const {
    if (offset < 4 || offset > view_->bytes.size()) return false;
    const Bytes before = view_->bytes.subspan(offset - 4, 4);
    return std::all_of(before.begin(), before.end(), [](std::uint8_t byte) { return byte == 0; });
}

std::uint32_t CellEnds::blockInside(std::uint32_t start, std::uint32_t end) const {
    const auto& chain = view_->chain;
    const auto next = std::upper_bound(
        chain.begin(), chain.end(), start,
        [](std::uint32_t offset, const ByteRange& block) { return offset < block.start; });
    return next != chain.end() && next->start < end ? next->start : 0;
}

double CellEnds::endWeight(std::uint32_t start, std::uint32_t end) const {
    const std::uint32_t blockEnd = freeblockEnd(view_->bytes, start);
    if (end == blockEnd) return 10;
    if (has(end, kHeader) && freeblockEnd(view_->bytes, end) == blockEnd) return 8;
    if (has(end, kCell | kRangeEnd)) return 6;
    if (end < blockEnd && blockEnd - end <= kFragment) return 5;
    if (has(end, kHeader)) return end < blockEnd ? 4 : 2;
    // What has taken the rest of the block since may have left as few bytes.
    for (std::uint32_t more = 1; more <= kFragment; ++more)
        if (has(end + more, kCell | kRangeEnd)) return 3;
    return 0;
}

void CellEnds::endsOf(std::uint32_t start, std::uint32_t least, std::vector<End>& ends) const {
    ends.clear();
    const auto last =
        std::min<std::uint32_t>(least + kReach, static_cast<std::uint32_t>(view_->bytes.size()));
    for (std::uint32_t at = least; at <= last; ++at)
        if (const double weight = endWeight(start, at); weight > 0) ends.push_back({at, weight});
}

}  // namespace salvor::deep
