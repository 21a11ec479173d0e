#include "app/RecoveredDatabase.h"

#include <fmt/format.h>

#include "app/RecoverFile.h"

namespace salvor {
namespace {

using Row = std::vector<NewDatabase::Value>;

NewDatabase::Value valueOf(const deep::RecoveredValue& value) {
    return std::visit(
        [](const auto& held) -> NewDatabase::Value {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, deep::RawBytes>)
                return held.bytes;
            else
                return held;
        },
        value);
}

}  // namespace

std::string originText(const deep::RowPlace& place) {
    std::string text = fmt::format("{}:{} page {} {}", fileName(place.file), place.offset,
                                   place.page, deep::toString(place.space));
    if (place.frame != 0) text += fmt::format(" frame {}", place.frame);
    return text;
}

std::size_t RecoveredDatabase::tableOf(const deep::Facts& facts, std::size_t table) {
    const auto known = tables_.find(table);
    if (known != tables_.end()) return known->second;
    const deep::TableFacts& one = facts.tables[table];
    std::vector<NewDatabase::Column> columns;
    for (std::size_t i = 0; i < one.columns.size(); ++i)
        columns.push_back({one.columns[i], one.types[i]});
    for (const char* name : {"_rowid", "_state", "_confidence", "_origin"})
        columns.push_back({name, ""});
    // A table may have been made and dropped more than once.
    std::string name = one.internal ? '_' + one.name : one.name;
    if (const int before = names_[name]++; before != 0) name += fmt::format(" ({})", before + 1);
    return tables_[table] = database_.addTable(name, columns);
}

void RecoveredDatabase::add(const deep::Facts& facts, const deep::RecoveredRow& row) {
    const std::size_t columns = facts.tables[row.table].columns.size();
    Row values(columns);
    for (const auto& column : row.columns) values[column.column] = valueOf(column.value);
    values.emplace_back(row.rowId ? NewDatabase::Value(*row.rowId) : std::monostate());
    values.emplace_back(std::string(deep::toString(row.state)));
    values.emplace_back(std::string(deep::toString(row.confidence)));
    values.emplace_back(originText(row.origins.front()));
    database_.insert(tableOf(facts, row.table), values);
}

}  // namespace salvor
