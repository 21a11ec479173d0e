#include "carving/deep/SchemaRows.h"

#include <algorithm>

#include "carving/deep/TextTraits.h"

namespace salvor::deep {
namespace {

// SQLite takes no statement that is longer.
constexpr std::size_t kLongestText = 1'000'000;

}  // namespace

std::optional<SchemaRow> SchemaRow::read(const Record& record, TextEncoding encoding) {
    if (record.types.size() != 5) return std::nullopt;
    SchemaRow row;
    bool sound = true;
    record.eachValue([&](std::size_t column, std::uint64_t serialType, Bytes value) {
        if (column == 3) {
            const auto number = serialInteger(serialType, value).value_or(0);
            row.root = number > 0 && number <= UINT32_MAX ? static_cast<std::uint32_t>(number) : 0;
            return;
        }
        if (serialClass(serialType) != kText || value.size() > kLongestText) {
            sound = sound && column == 4;
            return;
        }
        auto text = toUtf8(value, encoding);
        sound = sound && text;
        std::string* const fields[] = {&row.type, &row.name, &row.table, nullptr, &row.sql};
        if (text) *fields[column] = *std::move(text);
    });
    if (!sound) return std::nullopt;
    return row;
}

TableDefinition schemaTable() {
    return *TableDefinition::parse(
        "CREATE TABLE sqlite_master(type TEXT NOT NULL, name TEXT NOT NULL, "
        "tbl_name TEXT NOT NULL, rootpage INT, sql TEXT)");
}

}  // namespace salvor::deep
