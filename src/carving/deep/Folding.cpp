#include "carving/deep/Folding.h"

#include <algorithm>
#include <bit>
#include <tuple>

namespace salvor::deep {
namespace {

constexpr std::size_t kTellingText = 8;
constexpr std::size_t kMostTextColumns = 4;

/// The first text of a record that tells rows apart.
std::optional<std::size_t> tellingText(const Record& record) {
    std::optional<std::size_t> best;
    record.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
        const bool telling = serialClass(type) == kText && value.size() >= kTellingText &&
                             value.size() == serialLength(type);
        if (!best && telling) best = column;
    });
    return best;
}

}  // namespace

void Folding::fold(std::uint16_t table, std::vector<std::uint32_t> rows) {
    table_ = table;
    model_ = &found_.survey().tables()[table];
    rows_ = std::move(rows);
    live_.clear();
    collectKeys();
    if (!model_->dropped) passLiveRows();
    judgeByLiveRows();
    settleOpenRows();
    foldEqual();
    foldVersions();
}

void Folding::collectKeys() {
    byHash_.clear();
    byKey_.clear();
    byDeclared_.clear();
    byText_.clear();
    textColumns_.clear();
    for (const std::uint32_t place : rows_) {
        byHash_.push_back({row(place).hash, place});
        if (row(place).openFirst) addOpenHashes(place);
        const bool fragment = row(place).fate == RowFate::Fragment;
        if (model_->identities().empty() && !fragment) continue;
        const Record& record = found_.read(row(place));
        for (std::size_t i = 0; i < model_->identities().size(); ++i)
            if (const auto key = keyHash(record, model_->identities()[i]))
                (i < model_->declaredIdentities() ? byDeclared_ : byKey_).push_back({*key, place});
        const auto text = fragment ? tellingText(record) : std::nullopt;
        if (!text) continue;
        const std::vector<std::size_t> column{*text};
        if (std::find(textColumns_.begin(), textColumns_.end(), column) == textColumns_.end()) {
            if (textColumns_.size() == kMostTextColumns) continue;
            textColumns_.push_back(column);
        }
        byText_.push_back({*keyHash(record, column), place});
    }
    filter_.assign(std::bit_ceil(rows_.size() * 16 + 64), false);
    for (auto* keys : {&byHash_, &byDeclared_, &byKey_, &byText_}) {
        std::sort(keys->begin(), keys->end());
        for (const Keyed& one : *keys) filter_[one.key & (filter_.size() - 1)] = true;
    }
}

void Folding::addOpenHashes(std::uint32_t place) {
    Record record = found_.read(row(place));
    for (const std::uint64_t type : {kNull, kZero, kOne}) {
        record.types[0] = type;
        const std::uint64_t hash = contentHash(record);
        if (hash != row(place).hash) byHash_.push_back({hash, place});
    }
}

void Folding::settleOpenRows() {
    // Another copy, whose first column stands, says what it is.
    for (const Keyed& one : byHash_) {
        FoundRow& open = row(one.row);
        if (!open.openFirst || open.hash == one.key) continue;
        const auto [from, to] = std::equal_range(byHash_.begin(), byHash_.end(), one);
        for (auto other = from; other != to; ++other)
            if (!row(other->row).openFirst && row(other->row).fate == RowFate::Deleted)
                open.hash = one.key;
    }
}

void Folding::passLiveRows() {
    const PageStore& store = found_.survey().store();
    std::uint64_t left = std::uint64_t{store.pageCount()} * 4 + 1000;
    Record record;
    eachLiveCell(store, *model_, [&](std::uint32_t page, const BtreePage& node, const Cell& cell) {
        const Bytes whole = payload_.gather(node.bytes(), cell, store.layout().usable,
                                            [&](std::uint32_t number) -> Bytes {
                                                if (left == 0) return {};
                                                --left;
                                                return store.currentBytes(number);
                                            });
        if (record.read(whole)) meetLiveRow(record, cell.rowId, page, cell);
        return !stop_.stop_requested();
    });
}

void Folding::meetLiveRow(const Record& record, std::int64_t rowId, std::uint32_t page,
                          const Cell& cell) {
    const auto each = [&](const std::vector<Keyed>& keys, std::uint64_t key, auto&& meet) {
        if (!filter_[key & (filter_.size() - 1)]) return;
        const auto [from, to] = std::equal_range(keys.begin(), keys.end(), Keyed{key, 0});
        for (auto one = from; one != to; ++one) meet(one->row);
    };
    each(byHash_, contentHash(record), [&](std::uint32_t place) {
        FoundRow& met = row(place);
        // Where the row id is a value of the row, another one makes another row.
        if (model_->definition().alias && met.hasRowId && met.rowId != rowId) return;
        if (met.fate != RowFate::Fragment) met.fate = RowFate::Copy;
    });
    for (std::size_t i = 0; i < model_->identities().size(); ++i) {
        const bool declared = i < model_->declaredIdentities();
        const auto& keys = declared ? byDeclared_ : byKey_;
        if (const auto key = keys.empty() ? std::nullopt : keyHash(record, model_->identities()[i]))
            each(keys, *key, [&](std::uint32_t place) {
                LivePlace& known =
                    live_.try_emplace(place, LivePlace{page, cell, false}).first->second;
                if (declared && !known.declared) known = {page, cell, true};
            });
    }
    for (const auto& column : textColumns_)
        if (const auto key = keyHash(record, column))
            each(byText_, *key, [&](std::uint32_t place) { row(place).fate = RowFate::Dropped; });
}

bool Folding::liveRecord(std::uint32_t page, const Cell& cell, Record& record) {
    const PageStore& store = found_.survey().store();
    const Bytes whole =
        payload_.gather(store.currentBytes(page), cell, store.layout().usable,
                        [&](std::uint32_t number) { return store.currentBytes(number); });
    return record.read(whole);
}

void Folding::judgeByLiveRows() {
    if (model_->dropped) return;
    const PageStore& store = found_.survey().store();
    Record record;
    for (const std::uint32_t place : rows_) {
        FoundRow& one = row(place);
        if (one.fate == RowFate::Copy || one.fate == RowFate::Dropped) continue;
        const auto byIdentity = live_.find(place);
        bool version = byIdentity != live_.end() && byIdentity->second.declared;
        const bool otherId =
            byIdentity != live_.end() && one.hasRowId && one.rowId != byIdentity->second.cell.rowId;
        if (byIdentity != live_.end() && !version && !otherId &&
            liveRecord(byIdentity->second.page, byIdentity->second.cell, record))
            version = alike(one, valuesOf(record));
        if (!version && one.hasRowId && !model_->definition().withoutRowId) {
            const FoundCell cell = findRow(store, model_->root(), one.rowId);
            if (cell.page != 0 && liveRecord(cell.page, cell.cell, record))
                version = alike(one, valuesOf(record));
        }
        if (!version) continue;
        one.fate = one.fate == RowFate::Fragment ? RowFate::Dropped : RowFate::Earlier;
        if (!one.hasRowId && byIdentity != live_.end()) {
            one.rowId = byIdentity->second.cell.rowId;
            one.hasRowId = !model_->definition().withoutRowId;
            one.idSource = RowIdSource::LiveRow;
        }
    }
}

std::vector<Folding::Value> Folding::valuesOf(const Record& record) const {
    std::vector<Value> values;
    record.eachValue([&](std::size_t, std::uint64_t type, Bytes value) {
        values.push_back({type, {value.begin(), value.end()}, value.size() == serialLength(type)});
    });
    return values;
}

bool Folding::alike(const FoundRow& one, const std::vector<Value>& other) {
    std::size_t compared = 0;
    std::size_t equal = 0;
    found_.read(one).eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
        const bool whole = value.size() == serialLength(type);
        // Of a text that is cut its beginning has to do.
        const bool told = whole || value.size() >= kTellingText;
        if (!told || column >= other.size() || !other[column].whole ||
            !model_->columns()[column].varies() || model_->definition().alias == column)
            return;
        ++compared;
        const Value& own = other[column];
        if (own.type == type && own.bytes.size() >= value.size() &&
            std::equal(value.begin(), value.end(), own.bytes.begin()))
            ++equal;
    });
    return compared != 0 && equal * 2 >= compared;
}

void Folding::foldEqual() {
    const auto intact = [&](std::uint32_t place) {
        const RowFate fate = row(place).fate;
        return fate == RowFate::Deleted || fate == RowFate::Earlier;
    };
    std::erase_if(rows_, [&](std::uint32_t place) {
        return !intact(place) && row(place).fate != RowFate::Fragment;
    });
    const auto order = [&](std::uint32_t place) {
        const FoundRow& one = row(place);
        const bool current = found_.images()[one.image].current;
        return std::tuple(one.fate == RowFate::Fragment, one.hash, one.reading != Reading::Whole,
                          !current, -one.score, one.image, one.start);
    };
    std::sort(rows_.begin(), rows_.end(), [&](std::uint32_t a, std::uint32_t b) {
        const bool told = row(a).hash != row(b).hash &&
                          (row(a).fate == RowFate::Fragment) == (row(b).fate == RowFate::Fragment);
        return told ? row(a).hash < row(b).hash : order(a) < order(b);
    });
    std::vector<std::uint32_t> listed;
    std::size_t groupFrom = 0;  // in `listed`
    for (const std::uint32_t place : rows_) {
        FoundRow& one = row(place);
        if (listed.empty() || row(listed.back()).hash != one.hash) groupFrom = listed.size();
        const auto same = std::find_if(listed.begin() + static_cast<std::ptrdiff_t>(groupFrom),
                                       listed.end(), [&](std::uint32_t other) {
                                           const FoundRow& kept = row(other);
                                           const bool apart = model_->definition().alias &&
                                                              kept.hasRowId && one.hasRowId &&
                                                              kept.rowId != one.rowId;
                                           return !apart && kept.fate != RowFate::Folded;
                                       });
        if (same == listed.end()) {
            listed.push_back(place);
            continue;
        }
        FoundRow& kept = row(*same);
        if (!kept.hasRowId && one.hasRowId) {
            kept.rowId = one.rowId;
            kept.hasRowId = true;
            kept.idSource = RowIdSource::Copy;
        }
        one.fate = RowFate::Folded;
        one.nextCopy = kept.nextCopy;
        kept.nextCopy = place;
    }
    rows_ = std::move(listed);
}

void Folding::foldVersions() {
    std::vector<Keyed> keys;
    for (const std::uint32_t place : rows_)
        if (row(place).hasRowId)
            keys.push_back({static_cast<std::uint64_t>(row(place).rowId), place});
    std::vector<std::uint32_t> group;
    for (int pass = 0; pass < 2; ++pass) {
        std::sort(keys.begin(), keys.end());
        for (std::size_t i = 0; i < keys.size();) {
            group.clear();
            for (const std::uint64_t key = keys[i].key; i < keys.size() && keys[i].key == key; ++i)
                group.push_back(keys[i].row);
            if (group.size() > 1) foldGroup(group);
        }
        keys.clear();
        if (pass != 0) break;
        byKey_.insert(byKey_.end(), byDeclared_.begin(), byDeclared_.end());
        for (const Keyed& one : byKey_) {
            const RowFate fate = row(one.row).fate;
            if (fate == RowFate::Deleted || fate == RowFate::Earlier || fate == RowFate::Fragment)
                keys.push_back(one);
        }
    }
}

void Folding::foldGroup(std::vector<std::uint32_t>& group) {
    // Damaged ones last, so that none of them hides an intact one; else the latest first.
    std::sort(group.begin(), group.end(), [&](std::uint32_t a, std::uint32_t b) {
        const auto order = [&](std::uint32_t place) {
            return std::tuple(row(place).fate == RowFate::Fragment,
                              row(place).fate == RowFate::Earlier, -found_.timeOf(row(place)),
                              -row(place).score);
        };
        return order(a) < order(b);
    });
    constexpr std::size_t kMostCompared = 64;
    for (std::size_t i = 0; i < std::min(group.size(), kMostCompared); ++i) {
        if (row(group[i]).fate != RowFate::Deleted && row(group[i]).fate != RowFate::Earlier)
            continue;
        const auto values = valuesOf(found_.read(row(group[i])));
        for (std::size_t j = i + 1; j < group.size(); ++j) {
            FoundRow& other = row(group[j]);
            if (other.fate == RowFate::Deleted && alike(other, values))
                other.fate = RowFate::Earlier;
            if (other.fate == RowFate::Fragment && alike(other, values))
                other.fate = RowFate::Dropped;
        }
    }
}

}  // namespace salvor::deep
