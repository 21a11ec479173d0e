#include "carving/deep/TableDefinition.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace salvor::deep {
namespace {

/// "name:affinity" of each column, "!" behind those that are never NULL, "*" behind the alias, then
/// the unique keys by column.
std::string told(std::string_view sql) {
    const auto table = TableDefinition::parse(sql);
    if (!table) return "none";
    std::string text = table->name + (table->withoutRowId ? " without" : "");
    constexpr const char* kAffinities = "TIRN-";
    for (std::size_t i = 0; i < table->columns.size(); ++i) {
        const auto& column = table->columns[i];
        text += fmt::format(" {}:{}{}{}", column.name,
                            kAffinities[static_cast<std::size_t>(column.affinity)],
                            column.notNull ? "!" : "", table->alias == i ? "*" : "");
    }
    for (const auto& key : table->uniqueKeys) {
        text += " u";
        for (const std::size_t column : key) text += std::to_string(column);
    }
    return text;
}

TEST(TableDefinition, ReadsTheColumnsOfARecord) {
    const std::pair<const char*, const char*> cases[] = {
        {"CREATE TABLE t(a INTEGER PRIMARY KEY AUTOINCREMENT, b TEXT NOT NULL, c)",
         "t a:I* b:T! c:-"},
        {"create table if not exists main.[x y] (\"a\"\"b\" varchar(10, 2) unique, `c` DOUBLE)",
         "x y a\"b:T c:R u0"},
        {"CREATE TABLE t(a INT PRIMARY KEY, b INTEGER PRIMARY KEY DESC)", "t a:I b:I u0 u1"},
        {"CREATE TABLE t(a INTEGER, b DATETIME, PRIMARY KEY(a))", "t a:I* b:N"},
        {"CREATE TABLE t(a, b INTEGER DEFAULT (1+(2)) CHECK (b NOT NULL), UNIQUE(b, a COLLATE "
         "NOCASE "
         "DESC), FOREIGN KEY(a) REFERENCES o(x) ON DELETE SET NULL)",
         "t a:- b:I u10"},
        {"CREATE TABLE t(a TEXT, b TEXT, c TEXT, PRIMARY KEY (c, a)) WITHOUT ROWID",
         "t without c:T! a:T! b:T u01"},
        {"CREATE TABLE t(a INT, b AS (a+1), c INT GENERATED ALWAYS AS (a) STORED)", "t a:I c:I"},
        {"CREATE TABLE t -- the table\n(a /* first, */ REAL, b CONSTRAINT n NOT NULL)",
         "t a:R b:-!"},
        {"CREATE TEMP TABLE t(a BLOB NOT NULL DEFAULT '),(', b UNSIGNED BIG INT)", "t a:-! b:I"},
        {"CREATE TABLE t(a", "none"},
        {"CREATE TABLE t()", "none"},
        {"CREATE TABLE t((((((", "none"},
        {"CREATE VIRTUAL TABLE t USING fts3(a)", "none"},
        {"CREATE INDEX i ON t(a)", "none"},
        {"", "none"}};
    for (const auto& [sql, expected] : cases) EXPECT_EQ(told(sql), expected) << sql;
}

TEST(IndexDefinition, ReadsPlainColumnsOnly) {
    const auto index =
        IndexDefinition::parse("CREATE UNIQUE INDEX i ON \"t\"(a, b COLLATE NOCASE DESC) WHERE a");
    ASSERT_TRUE(index);
    EXPECT_EQ(index->table, "t");
    EXPECT_EQ(index->columns, (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(index->unique && index->partial);
    EXPECT_FALSE(IndexDefinition::parse("CREATE INDEX i ON t(lower(a))"));
    EXPECT_FALSE(IndexDefinition::parse("CREATE INDEX i ON t(a + b)"));
}

}  // namespace
}  // namespace salvor::deep
