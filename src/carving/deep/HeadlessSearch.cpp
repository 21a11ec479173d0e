#include "carving/deep/HeadlessSearch.h"

#include <algorithm>
#include <array>

#include "carving/deep/CellSearch.h"
#include "carving/format/Varint.h"

namespace salvor::deep {
namespace {

// Payload length, row id and header length take at least three of the four bytes.
constexpr std::uint32_t kLost = 4;
constexpr std::uint64_t kOneByte = 128;

/// The serial types of values that take `length` bytes, one or more.
struct TypesOfLength {
    std::array<std::uint64_t, 4> types{};
    std::size_t count = 0;

    explicit TypesOfLength(std::uint64_t length) {
        for (std::uint64_t type = kInt8; type <= kFloat; ++type)
            if (serialLength(type) == length) add(type);
        add(12 + 2 * length);
        add(13 + 2 * length);
    }
    void add(std::uint64_t type) {
        if (count < types.size()) types.at(count++) = type;
    }
};

}  // namespace

HeadlessSearch::HeadlessSearch(const std::vector<TableModel>& tables, const DatabaseLayout& layout)
    : tables_(tables), usable_(layout.usable) {
    for (const auto& table : tables) {
        maxColumns_ = std::max(maxColumns_, table.columns().size());
        twoRuns_ |= table.definition().alias != 0 || table.columns().size() >= 100;
    }
}

void HeadlessSearch::search(const PageView& view, const CellEnds& ends,
                            std::vector<Candidate>& found) {
    effort_.begin(view.bytes.size());
    auto range = view.ranges.begin();
    for (const std::uint32_t start : ends.headers()) {
        while (range != view.ranges.end() && range->end <= start) ++range;
        if (range == view.ranges.end() || found.size() >= 2 * kMostCandidates || effort_.isSpent())
            break;
        if (start >= range->start) searchAt({view, ends, start, range->end, found});
    }
}

void HeadlessSearch::readRun(Bytes page, std::uint32_t at, std::uint32_t end, TypeRun& run) const {
    run.types.clear();
    run.ends.clear();
    run.bodies.clear();
    const std::uint64_t most = std::uint64_t{1} << 31;
    std::uint64_t body = 0;
    while (run.types.size() < maxColumns_ && body < most) {
        const Varint type = readVarint(page.first(end), at);
        if (type.length == 0 || serialClass(type.value) == kReserved) break;
        at += type.length;
        body += std::min(serialLength(type.value), most);
        run.types.push_back(type.value);
        run.ends.push_back(at);
        run.bodies.push_back(body);
    }
}

void HeadlessSearch::searchAt(const Place& place) {
    readRun(place.view.bytes, place.start + kLost, place.rangeEnd, run_);
    if (twoRuns_) readRun(place.view.bytes, place.start + kLost + 1, place.rangeEnd, nextRun_);
    effort_.spend(run_.types.size() + nextRun_.types.size());
    endsKnown_ = false;
    for (std::size_t i = 0; i < tables_.size() && effort_.spend(1); ++i) {
        const TableModel& table = tables_[i];
        if (table.definition().withoutRowId) continue;
        // Short rows are looked for on their own table's pages and where no table is known.
        const bool foreign = place.view.owner != kNoTable && place.view.owner != i;
        if (!table.isWide() && (foreign || place.view.ofIndex)) continue;
        searchTable(place, static_cast<std::uint16_t>(i));
    }
}

void HeadlessSearch::searchTable(const Place& place, std::uint16_t number) {
    const TableModel& table = tables_[number];
    for (const std::size_t columns : table.knownCounts()) {
        if (fits(table, run_, 0, columns)) tryHeaderLost(place, number, columns, run_, false);
        if (columns >= 100 && fits(table, nextRun_, 0, columns))
            tryHeaderLost(place, number, columns, nextRun_, true);
        if (table.definition().alias == 0) {
            if (columns >= 2 && fits(table, run_, 1, columns)) tryAliasLost(place, number, columns);
            continue;
        }
        if (fits(table, run_, 1, columns)) tryTypeGuessed(place, number, columns, run_, false);
        if (fits(table, nextRun_, 1, columns))
            tryTypeGuessed(place, number, columns, nextRun_, true);
    }
}

bool HeadlessSearch::fits(const TableModel& table, const TypeRun& run, std::size_t from,
                          std::size_t columns) const {
    if (run.types.size() + from < columns) return false;
    for (std::size_t i = from; i < columns; ++i)
        if (!table.admits(i, serialClass(run.types[i - from]))) return false;
    return true;
}

void HeadlessSearch::keep(const Place& place, Candidate candidate, std::uint64_t header,
                          std::uint64_t body) const {
    if (!candidate.place(header, body, usable_, true)) return;
    candidate.standsTo = std::min(candidate.end, place.rangeEnd);
    const bool wide = tables_[candidate.table].isWide();
    const bool holds = freeblockEnd(place.view.bytes, candidate.start) >= candidate.end;
    if (candidate.isCut() ? !wide : !holds) return;
    place.found.push_back(candidate);
}

void HeadlessSearch::tryHeaderLost(const Place& place, std::uint16_t number, std::size_t columns,
                                   const TypeRun& run, bool halfHeader) const {
    Candidate candidate;
    candidate.table = number;
    candidate.columns = static_cast<std::uint16_t>(columns);
    candidate.reading = Reading::HeaderLost;
    candidate.start = place.start;
    candidate.typesAt = place.start + kLost + (halfHeader ? 1 : 0);
    candidate.bodyAt = run.ends[columns - 1];
    std::uint64_t header = candidate.bodyAt - candidate.typesAt + 1;
    if (header >= kOneByte) ++header;
    const std::uint32_t headerBytes = varintLength(header);
    if (halfHeader &&
        (headerBytes != 2 || place.view.bytes[candidate.typesAt - 1] != (header & 0x7Fu)))
        return;
    const std::uint64_t body = run.bodies[columns - 1];
    const std::uint32_t payloadBytes = varintLength(header + body);
    const std::uint32_t room = kLost + (halfHeader ? 1 : 0);
    if (payloadBytes + headerBytes >= room) return;
    candidate.rowIdBytes = static_cast<std::uint8_t>(room - payloadBytes - headerBytes);
    keep(place, candidate, header, body);
}

void HeadlessSearch::tryAliasLost(const Place& place, std::uint16_t number,
                                  std::size_t columns) const {
    Candidate candidate;
    candidate.table = number;
    candidate.columns = static_cast<std::uint16_t>(columns);
    candidate.reading = Reading::AliasLost;
    candidate.rowIdBytes = 1;
    candidate.start = place.start;
    candidate.typesAt = place.start + kLost;
    candidate.bodyAt = run_.ends[columns - 2];
    const std::uint64_t header = candidate.bodyAt - candidate.typesAt + 2;
    const std::uint64_t body = run_.bodies[columns - 2];
    if (header < kOneByte && header + body < kOneByte) keep(place, candidate, header, body);
}

void HeadlessSearch::tryTypeGuessed(const Place& place, std::uint16_t number, std::size_t columns,
                                    const TypeRun& run, bool longType) {
    Candidate candidate;
    candidate.table = number;
    candidate.columns = static_cast<std::uint16_t>(columns);
    candidate.reading = Reading::TypeGuessed;
    candidate.rowIdBytes = 1;
    candidate.start = place.start;
    candidate.typesAt = place.start + kLost + (longType ? 1 : 0);
    candidate.bodyAt = columns >= 2 ? run.ends[columns - 2] : candidate.typesAt;
    const std::uint64_t known = columns >= 2 ? run.bodies[columns - 2] : 0;
    const std::uint64_t header = candidate.bodyAt - candidate.typesAt + (longType ? 3 : 2);
    if (header + known >= kOneByte) return;
    if (!endsKnown_) place.ends.endsOf(place.start, place.start + kLost, cellEnds_);
    if (!endsKnown_) effort_.spend(kOneByte);
    endsKnown_ = true;
    effort_.spend(cellEnds_.size());
    for (const CellEnds::End& end : cellEnds_) {
        if (end.at < candidate.bodyAt + known) continue;
        const std::uint64_t length = end.at - candidate.bodyAt - known;
        if (header + known + length >= kOneByte) break;
        if (length == 0) {
            if (!longType) keepEmptyFirst(place, candidate, header, known);
            continue;
        }
        const TypesOfLength choices(length);
        for (std::size_t i = 0; i < choices.count; ++i) {
            const std::uint64_t type = choices.types.at(i);
            if (varintLength(type) != (longType ? 2u : 1u)) continue;
            if (longType && place.view.bytes[candidate.typesAt - 1] != (type & 0x7Fu)) continue;
            if (!tables_[number].admits(0, serialClass(type))) continue;
            candidate.lostType = type;
            keep(place, candidate, header, known + length);
        }
    }
}

void HeadlessSearch::keepEmptyFirst(const Place& place, Candidate candidate, std::uint64_t header,
                                    std::uint64_t known) const {
    // Of the values that take no byte the likeliest is taken; others may be as likely.
    constexpr double kNegligible = 0.01;
    constexpr std::array<std::uint64_t, 3> kEmpty{kNull, kZero, kOne};
    const ColumnModel& column = tables_[candidate.table].columns()[0];
    double best = 0;
    double sum = 0;
    for (const std::uint64_t type : kEmpty) {
        if (!tables_[candidate.table].admits(0, serialClass(type))) continue;
        const double share = column.typeShare(serialClass(type));
        sum += share;
        if (share <= best) continue;
        best = share;
        candidate.lostType = type;
    }
    if (best == 0) return;
    candidate.openFirst = best < (1 - kNegligible) * sum;
    keep(place, candidate, header, known);
}

}  // namespace salvor::deep
