#include "carving/deep/Weighing.h"

#include <algorithm>

#include "carving/deep/CellSearch.h"
#include "carving/format/Varint.h"

namespace salvor::deep {
namespace {

constexpr double kThreshold = 22;
// Cells side by side in a freed block bear each other out.
constexpr double kTile = 20;
constexpr double kSureWithoutEnd = 80;
constexpr std::uint32_t kFewBytes = 3;
constexpr int kOddValues = 3;

/// Whether a lost row id of so many bytes fits between those of the page's own cells.
bool fitsNeighbours(const PageView& view, std::uint32_t bytes) {
    constexpr std::int64_t kAround = 30;
    const auto length = [](std::int64_t id) {
        return varintLength(static_cast<std::uint64_t>(id));
    };
    if (view.lowestRowId < 0) return true;
    const std::int64_t low = std::max<std::int64_t>(view.lowestRowId - kAround, 0);
    const std::int64_t high =
        view.highestRowId > INT64_MAX - kAround ? INT64_MAX : view.highestRowId + kAround;
    return bytes >= length(low) && bytes <= length(high);
}

bool allZero(Bytes bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

}  // namespace

void Weighing::weigh(const PageView& view, const CellEnds& ends, Candidate& candidate) {
    const Record& record = rows_.read(view.where, view.bytes, candidate);
    candidate.damaged = false;
    candidate.score = kRefused;
    const bool noBody = candidate.bodyOnPage() == 0;
    // Nothing but types is too little where nothing else says that a cell begins there.
    const bool placed =
        candidate.ownPointer || (!candidate.isHeadless() && ends.isBoundary(candidate.start));
    if (record.types.empty() || (noBody && !placed)) return;
    if (!noBody && allZero(record.payload)) return;
    candidate.score =
        structure(view, ends, candidate) + place(view, candidate) + content(candidate, record);
    if (candidate.isCut()) candidate.score -= 8;
    if (!rows_.chainComplete()) candidate.damaged = true;
}

double Weighing::structure(const PageView& view, const CellEnds& ends,
                           const Candidate& candidate) const {
    double weight = tableOf(candidate).knowsCount(candidate.columns) ? 0 : -12;
    if (candidate.headerStands())
        weight += 6.0 * varintLength(candidate.bodyAt - candidate.typesAt + 1);
    return weight + (candidate.isHeadless() ? headlessCell(view, ends, candidate)
                                            : wholeCell(ends, candidate));
}

double Weighing::wholeCell(const CellEnds& ends, const Candidate& candidate) const {
    double weight = 8.0 * varintLength(candidate.payload);
    const TableModel& table = tableOf(candidate);
    if (!table.definition().withoutRowId) {
        // Of a table without rows nobody knows how far its row ids went.
        const std::int64_t known = table.knownRowId();
        const std::int64_t largest = known == 0 ? INT32_MAX : std::min(known, INT64_MAX / 4);
        weight += candidate.rowId <= 0 ? -14 : candidate.rowId <= 2 * largest + 1000 ? 4 : -8;
    }
    if (candidate.ownPointer) return weight + 18;
    if (ends.isBoundary(candidate.start)) {
        weight += 12;
    } else if (ends.followsZeros(candidate.start)) {
        weight += 6;
    }
    return ends.beginsCell(candidate.end) ? weight + 4 : weight;
}

double Weighing::headlessCell(const PageView& view, const CellEnds& ends,
                              const Candidate& candidate) const {
    const TableModel& table = tableOf(candidate);
    double weight = 0;
    const bool blockHeader = isFreeblockHeader(view.bytes, candidate.start);
    if (candidate.reading == Reading::HeaderStands && table.isWide())
        weight += blockHeader ? 12 : -10;
    if (ends.beginsBlock(candidate.start)) {
        weight += 12;
    } else if (ends.isBoundary(candidate.start)) {
        weight += 6;
    }
    const double end = blockHeader ? ends.endWeight(candidate.start, candidate.end) : 0;
    // A guessed type was chosen by the end; for the others it is a witness of its own.
    weight += candidate.reading == Reading::TypeGuessed ? end : end >= 8 ? 10 : end > 0 ? 4 : 0;
    if (table.definition().withoutRowId) return weight;
    const std::int64_t known = table.knownRowId();
    const std::uint32_t largest = known == 0 ? 3 : varintLength(static_cast<std::uint64_t>(known));
    weight += candidate.rowIdBytes <= largest ? 2 : -6.0 * (candidate.rowIdBytes - largest);
    if (view.hasRowIds && (view.owner == candidate.table || view.owner == kNoTable))
        weight += fitsNeighbours(view, candidate.rowIdBytes) ? 4 : -14;
    return weight;
}

double Weighing::place(const PageView& view, const Candidate& candidate) const {
    const TableModel& table = tableOf(candidate);
    if (view.owner == kNoTable) return table.dropped && table.root() == view.where.page ? 6 : 0;
    // Tables alike in all their columns are told apart by nothing else, and rows of one that
    // lives fit its own values better than those of one that nothing is left of.
    if (survey_.tables()[view.owner].dropped) return view.owner == candidate.table ? 20 : -60;
    return view.owner == candidate.table ? 4 : -4;
}

double Weighing::content(Candidate& candidate, const Record& record) const {
    const TableModel& table = tableOf(candidate);
    double types = 0;
    double values = 0;
    int odd = 0;
    const bool typeLost =
        candidate.reading == Reading::AliasLost || candidate.reading == Reading::TypeGuessed;
    record.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
        const ColumnModel& model = table.columns()[column];
        if (column != 0 || !typeLost) types += model.typeWeight(serialClass(type));
        if (value.size() != serialLength(type)) return;
        const double weight = model.valueWeight(type, value);
        values += weight;
        candidate.damaged |= weight <= ColumnModel::kImpossible;
        if (weight <= ColumnModel::kOdd) ++odd;
    });
    candidate.damaged |= odd >= kOddValues;
    if (candidate.isHeadless() && candidate.bodyOnPage() < kFewBytes) types = 0;
    return types + values;
}

bool Weighing::isTile(const PageView& view, const CellEnds& ends, const Candidate& candidate) {
    return candidate.isHeadless() && view.owner == candidate.table &&
           (ends.isBoundary(candidate.start) || ends.beginsBlock(candidate.start)) &&
           ends.endWeight(candidate.start, candidate.end) >= 8;
}

bool Weighing::isAccepted(const PageView& view, const CellEnds& ends,
                          const Candidate& candidate) const {
    const TableModel& table = tableOf(candidate);
    if (isTile(view, ends, candidate)) return candidate.score >= kTile;
    double threshold = kThreshold;
    if (!table.isLearned()) threshold += 6;
    if (candidate.isHeadless() && table.columns().size() < 6) threshold += 4;
    const bool foreign = view.owner != kNoTable && view.owner != candidate.table;
    if (foreign) threshold += 6;
    if (foreign && !table.isWide() && candidate.isHeadless()) return false;
    if (candidate.score < threshold) return false;
    if (!candidate.isHeadless() || table.isWide() || candidate.score >= kSureWithoutEnd)
        return true;
    return ends.endWeight(candidate.start, candidate.end) > 0;
}

}  // namespace salvor::deep
