#include "carving/deep/IndexWitness.h"

#include <algorithm>

#include "carving/deep/CellSearch.h"
#include "carving/format/TreeWalk.h"
#include "carving/format/Varint.h"

namespace salvor::deep {
namespace {

// Shorter keys stand everywhere.
constexpr std::size_t kShortestKey = 4;
constexpr std::size_t kFilterBits = 24;
// Rows with one and the same key are told apart by no index.
constexpr std::size_t kMostAlike = 16;

std::uint32_t filterPlace(std::uint32_t word) {
    return word * 0x9E3779B1u >> (32 - kFilterBits);
}

void appendVarint(std::string& out, std::uint64_t value) {
    const std::uint32_t length = varintLength(value);
    for (std::uint32_t i = length; i-- > 0;) {
        const auto low = static_cast<std::uint8_t>(value >> (7 * i) & 0x7Fu);
        out += static_cast<char>(i == 0 ? low : low | 0x80u);
    }
}

bool equalAt(Bytes page, std::size_t at, const std::string& text) {
    const Bytes there = slice(page, at, text.size());
    return there.size() == text.size() &&
           std::equal(there.begin(), there.end(), text.begin(),
                      [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); });
}

}  // namespace

void IndexWitness::tellRowIds() {
    if (!collectKeys()) return;
    PageViewer viewer(found_.survey().store(), found_.survey().uses());
    PageView view;
    for (std::uint32_t i = 0; i < found_.images().size() && !stop_.stop_requested(); ++i) {
        viewer.look(found_.images()[i], i, view);
        if (view.ofIndex || !view.node) searchPage(view);
    }
    settle();
}

bool IndexWitness::collectKeys() {
    starts_.assign(std::size_t{1} << kFilterBits, false);
    const Survey& survey = found_.survey();
    std::vector<std::vector<const IndexModel*>> indexes(survey.tables().size());
    for (const IndexModel& index : survey.indexes())
        if (!index.columns.empty()) indexes[index.table].push_back(&index);
    for (std::uint32_t i = 0; i < found_.rows().size(); ++i) {
        const FoundRow& row = found_.rows()[i];
        const bool listed = row.fate == RowFate::Deleted || row.fate == RowFate::Earlier;
        if (row.hasRowId || !listed || indexes[row.table].empty() || row.rowIdBytes == 0) continue;
        const Record& record = found_.read(row);
        for (const IndexModel* index : indexes[row.table]) addKey(record, *index, i);
    }
    return !keys_.empty();
}

void IndexWitness::addKey(const Record& record, const IndexModel& index, std::uint32_t row) {
    Key key{row, index.unique, {}, {}};
    for (const std::size_t column : index.columns) {
        // A first column whose type was guessed makes no witness, nor does the row id itself.
        if (column >= record.types.size() || (column == 0 && found_.rows()[row].openFirst)) return;
        appendVarint(key.types, record.types[column]);
        std::uint64_t at = record.body;
        for (std::size_t i = 0; i < column; ++i) at += serialLength(record.types[i]);
        const Bytes value = slice(record.payload, static_cast<std::size_t>(at),
                                  static_cast<std::size_t>(serialLength(record.types[column])));
        key.body.append(value.begin(), value.end());
    }
    if (key.body.size() < kShortestKey || key.body.size() > UINT16_MAX) return;
    const std::uint32_t word =
        bigEndian32({reinterpret_cast<const std::uint8_t*>(key.body.data()), key.body.size()}, 0);
    if (byStart_.count(word) >= kMostAlike * kMostAlike) return;
    starts_[filterPlace(word)] = true;
    byStart_.emplace(word, static_cast<std::uint32_t>(keys_.size()));
    keys_.push_back(std::move(key));
}

void IndexWitness::searchPage(const PageView& view) {
    if (view.current) {
        for (const ByteRange& range : view.ranges) searchRange(view, range);
    } else {
        searchRange(view, {view.firstOffset(), static_cast<std::uint32_t>(view.bytes.size())});
    }
}

void IndexWitness::searchRange(const PageView& view, const ByteRange& range) {
    const Bytes page = view.bytes;
    for (std::uint32_t at = range.start + 4; at + kShortestKey <= range.end; ++at) {
        const std::uint32_t word = bigEndian32(page, at);
        if (!starts_[filterPlace(word)]) continue;
        const auto [from, to] = byStart_.equal_range(word);
        for (auto one = from; one != to; ++one) {
            const Key& key = keys_[one->second];
            if (at + key.body.size() > range.end || !equalAt(page, at, key.body)) continue;
            match(view, range, at, key);
            matchHeadless(view, range, at, key);
        }
    }
}

void IndexWitness::match(const PageView& view, const ByteRange& range, std::uint32_t at,
                         const Key& key) {
    const std::uint64_t type = view.bytes[at - 1];
    if (type == kNull || type == kFloat || type > kOne) return;
    // Of the key's own types those stand that a freeblock's header does not cover.
    const std::size_t room = std::min<std::size_t>(key.types.size(), at - 1 - range.start);
    std::size_t stands = 0;
    while (stands < room && view.bytes[at - 2 - stands] ==
                                static_cast<std::uint8_t>(key.types[key.types.size() - 1 - stands]))
        ++stands;
    const std::size_t lost = key.types.size() - stands;
    const std::size_t headerStart = at - 1 - key.types.size();
    const bool covered = lost <= 2 && headerStart >= range.start + 2 &&
                         isFreeblockHeader(view.bytes, static_cast<std::uint32_t>(headerStart - 2));
    if (lost != 0 && !covered) return;
    const std::size_t end = at + key.body.size() + static_cast<std::size_t>(serialLength(type));
    if (end > range.end) return;
    const auto id = serialInteger(type, view.bytes.subspan(at + key.body.size()));
    if (id) answer(key, *id);
}

void IndexWitness::matchHeadless(const PageView& view, const ByteRange& range, std::uint32_t at,
                                 const Key& key) {
    // Of an entry of one column whose type takes a byte all types are lost; the row id is what
    // stands between the key and the end.
    if (key.types.size() != 1 || !isFreeblockHeader(view.bytes, at - 4)) return;
    const auto from = static_cast<std::uint32_t>(at + key.body.size());
    const std::uint32_t blockEnd = freeblockEnd(view.bytes, at - 4);
    for (std::uint64_t type = kInt8; type <= 5; ++type) {
        const auto end = from + static_cast<std::uint32_t>(serialLength(type));
        const bool bounded = end == blockEnd || end == range.end ||
                             (end < blockEnd && isFreeblockHeader(view.bytes, end) &&
                              freeblockEnd(view.bytes, end) == blockEnd);
        if (end > range.end) break;
        const auto id = serialInteger(type, slice(view.bytes, from, end - from));
        if (bounded && id && integerType(*id) == type) answer(key, *id);
    }
}

void IndexWitness::answer(const Key& key, std::int64_t id) {
    const FoundRow& row = found_.rows()[key.row];
    if (id <= 0 || varintLength(static_cast<std::uint64_t>(id)) != row.rowIdBytes) return;
    const std::int64_t known = found_.tableOf(row).knownRowId();
    if (known != 0 && id > known) return;
    (key.unique ? unique_ : others_)[key.row].add(id);
}

void IndexWitness::settle() {
    const PageStore& store = found_.survey().store();
    for (const auto* answers : {&unique_, &others_})
        for (const auto& [place, answer] : *answers) {
            FoundRow& row = found_.rows()[place];
            if (row.hasRowId || answer.disputed) continue;
            const TableModel& table = found_.tableOf(row);
            // The entry of a row that lives tells of that row.
            if (row.fate == RowFate::Deleted && !table.dropped &&
                findRow(store, table.root(), answer.id).page != 0)
                continue;
            row.rowId = answer.id;
            row.hasRowId = true;
            row.idSource = RowIdSource::Index;
        }
}

}  // namespace salvor::deep
