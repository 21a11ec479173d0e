#include "carving/deep/TableModel.h"

#include <algorithm>

#include "carving/deep/ContentHash.h"

namespace salvor::deep {

TableModel::TableModel(TableDefinition definition, std::uint32_t root, const DatabaseLayout& layout)
    : definition_(std::move(definition)), root_(root), counts_(definition_.columns.size() + 1) {
    columns_.reserve(definition_.columns.size());
    for (std::size_t i = 0; i < definition_.columns.size(); ++i)
        columns_.emplace_back(definition_.columns[i], definition_.alias == i, layout);
    addColumnCount(columns_.size());
    finishLearning();
}

void TableModel::learn(const Record& record, std::int64_t rowId) {
    if (record.types.empty() || record.types.size() > columns_.size()) return;
    ++learned_;
    addColumnCount(record.types.size());
    record.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
        columns_[column].learn(type, value, rowId);
    });
}

void TableModel::finishLearning() {
    for (auto& column : columns_) column.finish();
    twin_.reset();
    identities_ = definition_.uniqueKeys;
    constexpr std::size_t kEnoughIdentities = 4;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const bool wanted =
            definition_.uniqueKeys.empty() && identities_.size() < kEnoughIdentities;
        if (wanted && columns_[i].identifies()) identities_.push_back({i});
        if (!twin_ && columns_[i].rowIdOffset()) twin_ = i;
    }
}

void TableModel::addColumnCount(std::size_t count) {
    if (count == 0 || count >= counts_.size() || counts_[count]) return;
    counts_[count] = true;
    knownCounts_.insert(std::lower_bound(knownCounts_.begin(), knownCounts_.end(), count), count);
}

bool TableModel::admitsCount(std::size_t count) const {
    const std::size_t all = columns_.size();
    // ALTER TABLE ADD COLUMN leaves rows behind that are shorter.
    return count <= all && (knowsCount(count) || (all > 3 && count >= 3 && count * 2 >= all));
}

bool TableModel::knowsCount(std::size_t count) const {
    return count < counts_.size() && counts_[count];
}

std::uint64_t contentHash(const Record& record) {
    std::size_t columns = record.types.size();
    while (columns != 0 && record.types[columns - 1] == kNull) --columns;
    ContentHash hash;
    for (std::size_t i = 0; i < columns; ++i) hash.add(record.types[i]);
    hash.add(
        slice(record.payload, record.body, static_cast<std::size_t>(bodyLength(record.types))));
    return hash.value();
}

std::optional<std::uint64_t> keyHash(const Record& record,
                                     const std::vector<std::size_t>& columns) {
    if (columns.empty()) return std::nullopt;
    std::uint64_t sum = 0;
    for (const std::size_t column : columns) {
        if (column >= record.types.size() || record.types[column] == kNull) return std::nullopt;
        const std::uint64_t type = record.types[column];
        std::uint64_t at = record.body;
        for (std::size_t i = 0; i < column; ++i) at += serialLength(record.types[i]);
        const auto length = static_cast<std::size_t>(serialLength(type));
        const Bytes value = slice(record.payload, static_cast<std::size_t>(at), length);
        if (value.size() != length) return std::nullopt;
        ContentHash hash;
        hash.add(std::uint64_t{column} << 48 | type);
        hash.add(value);
        sum += hash.value();
    }
    return sum;
}

}  // namespace salvor::deep
