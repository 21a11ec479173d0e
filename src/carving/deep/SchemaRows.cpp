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
    record.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
        if (column == 3) {
            const auto root = serialInteger(type, value).value_or(0);
            row.root = root > 0 && root <= UINT32_MAX ? static_cast<std::uint32_t>(root) : 0;
            return;
        }
        if (serialClass(type) != kText || value.size() > kLongestText) {
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
