#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace salvor::deep {

enum class Affinity : std::uint8_t { Text, Integer, Real, Numeric, None };

/// The affinity that SQLite derives from a declared type.
Affinity affinityOf(std::string_view declaredType);

struct ColumnDefinition {
    std::string name;
    std::string type;  ///< as declared, words parted by one blank
    Affinity affinity = Affinity::None;
    bool notNull = false;
};

/// What a CREATE TABLE text says of the table's records. The text is read, never run.
struct TableDefinition {
    static constexpr std::size_t kMaxColumns = 2000;

    std::string name;
    /// In the order of the record: of a table without row ids the primary key comes first, and
    /// columns that are computed on reading are left out.
    std::vector<ColumnDefinition> columns;
    std::optional<std::size_t> alias;  ///< the column that stands for the row id
    bool withoutRowId = false;
    /// UNIQUE and PRIMARY KEY constraints in the order of the text, by column; the alias has none.
    std::vector<std::vector<std::size_t>> uniqueKeys;

    /// Nothing when the text is no table with at least one stored column, or a virtual one.
    static std::optional<TableDefinition> parse(std::string_view sql);
    std::optional<std::size_t> column(std::string_view columnName) const;
};

/// What a CREATE INDEX text says.
struct IndexDefinition {
    std::string table;
    std::vector<std::string> columns;
    bool unique = false;
    bool partial = false;

    /// Nothing when the text is no index over plain columns.
    static std::optional<IndexDefinition> parse(std::string_view sql);
};

}  // namespace salvor::deep
