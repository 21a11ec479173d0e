#include "carving/deep/CellSearch.h"

#include <algorithm>
#include <cstring>

#include "carving/format/RecordHeader.h"
#include "carving/format/Varint.h"

namespace salvor::deep {
namespace {

/// The next offset from `at` on, before `end`, that does not hold zero.
std::uint32_t skipZeros(Bytes page, std::uint32_t at, std::uint32_t end) {
    for (std::uint64_t word = 0; end - at >= 8; at += 8) {
        std::memcpy(&word, &page[at], 8);
        if (word != 0) break;
    }
    while (at < end && page[at] == 0) ++at;
    return at;
}

/// Where the varint begins whose last byte stands before `end`; `end` when none does. Only a varint
/// of nine bytes may end with a high bit.
std::uint32_t varintBefore(Bytes page, std::uint32_t least, std::uint32_t end) {
    if (end <= least) return end;
    std::uint32_t start = end - 1;
    while (start > least && end - start < kMaxVarint && page[start - 1] >= 0x80) --start;
    if (page[end - 1] >= 0x80 && end - start != kMaxVarint) return end;
    return start;
}

/// Whether `value` as SQLite writes it stands before `end`.
bool standsBefore(Bytes page, std::uint32_t least, std::uint32_t end, std::uint64_t value) {
    const std::uint32_t length = varintLength(value);
    if (end < least + length) return false;
    const Varint read = readVarint(page.first(end), end - length);
    return read.value == value && read.length == length;
}

}  // namespace

bool endsVarint(Bytes page, std::uint32_t start, std::uint32_t end) {
    for (std::uint32_t at = start; at + 1 < end; ++at)
        if (page[at] < 0x80) return false;
    return start >= end || page[end - 1] < 0x80;
}

CellSearch::CellSearch(const std::vector<TableModel>& tables, const DatabaseLayout& layout)
    : tables_(tables), plan_(tables), usable_(layout.usable) {}

void CellSearch::search(PageView& view, std::vector<Candidate>& found) {
    effort_.begin(view.bytes.size());
    searchOldCells(view, found);
    std::sort(view.ranges.begin(), view.ranges.end(),
              [](const ByteRange& a, const ByteRange& b) { return a.start < b.start; });
    for (const ByteRange& range : view.ranges) searchRange(view, range, found);
}

void CellSearch::searchOldCells(PageView& view, std::vector<Candidate>& found) {
    const auto size = static_cast<std::uint32_t>(view.bytes.size());
    for (const Cell& cell : view.oldCells) {
        const ByteRange range{cell.start, std::min(cell.end, size)};
        const std::size_t before = found.size();
        const Varint length = readVarint(view.bytes, cell.payloadAt);
        if (length.value < 0x10000 && length.length != 0)
            readHeader(view, range, cell.payloadAt, length.length,
                       static_cast<std::uint32_t>(length.value), found);
        bool read = false;
        for (std::size_t i = before; i < found.size(); ++i) {
            found[i].ownPointer = found[i].start == cell.start && !found[i].isHeadless();
            read |= found[i].ownPointer;
        }
        // An index's own records are no rows; a cell that is none may hide what was there before.
        if (!read && !view.ofIndex) view.ranges.push_back(range);
    }
}

void CellSearch::searchRange(const PageView& view, const ByteRange& range,
                             std::vector<Candidate>& found) {
    const Bytes page = view.bytes;
    const std::uint32_t end = std::min(range.end, static_cast<std::uint32_t>(page.size()));
    const std::uint32_t last = end >= 3 ? end - 2 : 0;
    for (std::uint32_t at = range.start + 1; at < last; ++at) {
        const std::uint8_t byte = page[at];
        if (found.size() >= kMostCandidates || effort_.isSpent()) return;
        if (byte == 0) {
            at = skipZeros(page, at, end) - 1;
        } else if (byte < 0x80) {
            if (plan_.mayBegin(byte, page[at + 1], page[at + 2]))
                readHeader(view, range, at, 1, byte, found);
        } else if (page[at + 1] < 0x80) {
            const std::uint32_t length = (byte & 0x7Fu) << 7 | page[at + 1];
            if (plan_.mayBeLong(length)) readHeader(view, range, at, 2, length, found);
        }
    }
}

bool CellSearch::fits(const TableModel& table) const {
    for (std::size_t i = 0; i < types_.size(); ++i)
        if (!table.admits(i, serialClass(types_[i]))) return false;
    return true;
}

void CellSearch::readHeader(const PageView& view, const ByteRange& range, std::uint32_t at,
                            std::uint32_t lengthBytes, std::uint32_t length,
                            std::vector<Candidate>& found) {
    if (length <= lengthBytes || length > range.end - at) return;
    types_.clear();
    if (!readTypes(view.bytes, at + lengthBytes, at + length, types_)) return;
    effort_.spend(types_.size());
    const std::uint64_t body = bodyLength(types_);
    for (const std::uint16_t number : plan_.tablesOf(types_.size())) {
        constexpr std::size_t kStepsOfATable = 4;
        if (!effort_.spend(kStepsOfATable)) return;
        const TableModel& table = tables_[number];
        const bool tableLeaf = !table.definition().withoutRowId;
        if (!fits(table) || (view.ofIndex && tableLeaf && !table.isWide())) continue;
        Candidate candidate;
        candidate.table = number;
        candidate.columns = static_cast<std::uint16_t>(types_.size());
        candidate.typesAt = at + lengthBytes;
        candidate.bodyAt = at + length;
        if (!candidate.place(length, body, usable_, tableLeaf)) continue;
        if (!tryWhole(view, range, at, candidate, found))
            tryHeadless(view, range, at, candidate, found);
    }
}

bool CellSearch::tryWhole(const PageView& view, const ByteRange& range, std::uint32_t at,
                          Candidate candidate, std::vector<Candidate>& found) const {
    const Bytes page = view.bytes;
    const std::uint32_t least = std::max(range.start, view.firstOffset());
    std::uint32_t behindPayload = at;
    if (!tables_[candidate.table].definition().withoutRowId) {
        behindPayload = varintBefore(page, least, at);
        if (behindPayload == at) return false;
        const Varint rowId = readVarint(page, behindPayload);
        if (rowId.length != varintLength(rowId.value)) return false;
        candidate.rowId = static_cast<std::int64_t>(rowId.value);
        candidate.rowIdBytes = static_cast<std::uint8_t>(rowId.length);
    }
    if (!standsBefore(page, least, behindPayload, candidate.payload)) return false;
    candidate.start = behindPayload - varintLength(candidate.payload);
    candidate.end = std::max(candidate.end, candidate.start + 4);
    candidate.standsTo = std::min(candidate.end, range.end);
    found.push_back(candidate);
    return true;
}

void CellSearch::tryHeadless(const PageView& view, const ByteRange& range, std::uint32_t at,
                             Candidate candidate, std::vector<Candidate>& found) const {
    const TableModel& table = tables_[candidate.table];
    const std::uint32_t payloadBytes = varintLength(candidate.payload);
    const std::uint32_t least = std::max(range.start, view.firstOffset());
    const std::uint32_t rowIdLeast = table.definition().withoutRowId ? 0 : 1;
    const std::uint32_t rowIdMost = table.definition().withoutRowId ? 0 : kMaxVarint;
    candidate.reading = Reading::HeaderStands;
    bool anchored = false;
    for (std::uint32_t bytes = rowIdLeast; bytes <= rowIdMost; ++bytes) {
        const std::uint32_t front = payloadBytes + bytes;
        if (front < 4 || at < least + front) continue;
        candidate.start = at - front;
        if (!isFreeblockHeader(view.bytes, candidate.start)) continue;
        if (!endsVarint(view.bytes, candidate.start + 4, at)) continue;
        candidate.standsTo = std::min(candidate.end, range.end);
        const bool holds = freeblockEnd(view.bytes, candidate.start) >= candidate.end;
        if (!holds && !candidate.isCut()) continue;
        candidate.rowIdBytes = static_cast<std::uint8_t>(bytes);
        found.push_back(candidate);
        anchored = true;
    }
    if (anchored || !table.isWide() || rowIdMost == 0 || at < least + 4) return;
    // A wide header says enough by itself: its cell may have lost its beginning in other ways.
    candidate.start = at - 4;
    candidate.rowIdBytes = static_cast<std::uint8_t>(payloadBytes < 4 ? 4 - payloadBytes : 1);
    candidate.standsTo = std::min(candidate.end, range.end);
    found.push_back(candidate);
}

}  // namespace salvor::deep
