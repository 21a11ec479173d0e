#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "carving/deep/TableDefinition.h"
#include "carving/format/DatabaseLayout.h"
#include "carving/format/RecordHeader.h"

namespace salvor::deep {

/// A row of the schema table: a table, an index, a view or a trigger.
struct SchemaRow {
    std::string type;
    std::string name;
    std::string table;
    std::string sql;
    std::uint32_t root = 0;

    /// Nothing for a record that is no such row.
    static std::optional<SchemaRow> read(const Record& record, TextEncoding encoding);
};

/// The schema table itself, whose definition stands nowhere.
TableDefinition schemaTable();

}  // namespace salvor::deep
