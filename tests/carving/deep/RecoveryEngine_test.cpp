// Cases that random databases do not reach: tables alike, texts over many pages, what is told of a
// file as a whole.
#include "carving/deep/RecoveryEngine.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>

#include "tests/support/TempFolder.h"
#include "tools/sample/SqliteFile.h"
#include "util/MappedFile.h"

namespace salvor::deep {
namespace {

class RecoveryEngineTest : public ::testing::Test {
  protected:
    SqliteFile create(const SqliteLayout& layout = {}) { return {path_, layout}; }

    /// Closes the file and counts what is found, by table and state.
    std::map<std::string, int> recovered(SqliteFile& database, bool fragments = false) {
        database.close();
        const auto file = MappedFile::open(path_);
        const auto store = PageStore::open({file->bytes(), {}, {}});
        RecoveryOptions options;
        options.fragments = fragments;
        std::map<std::string, int> counts;
        facts_ = recoverRows(*store, options, [&](const Facts& facts, const RecoveredRow& row) {
            const std::string& table = facts.tables[row.table].name;
            ++counts[table + ' ' + toString(row.state)];
            if (const auto* text = std::get_if<std::string>(&row.columns[1].value))
                if (!text->starts_with(table)) ++counts["another table's"];
            return true;
        });
        return counts;
    }

    using Counts = std::map<std::string, int>;
    TempFolder folder_;
    std::filesystem::path path_ = folder_ / "a.db";
    Facts facts_;
};

TEST_F(RecoveryEngineTest, TellsRowsOfDroppedTablesFromThoseOfTablesAlike) {
    auto database = create();
    for (const char* table : {"one", "two", "three"}) {
        database.execute(
            fmt::format("CREATE TABLE {}(id INTEGER PRIMARY KEY, a TEXT, b INT)", table));
        for (int i = 0; i < 60; ++i)
            database.insert(table,
                            {std::monostate{}, fmt::format("{} {}", table, i), std::int64_t{i}});
    }
    database.execute("DROP TABLE one");
    database.execute("DELETE FROM three WHERE id % 10 = 4");
    EXPECT_EQ(recovered(database), (Counts{{"one dropped", 60}, {"three deleted", 6}}));
}

TEST_F(RecoveryEngineTest, KeepsEarlierVersionsOfLiveRowsApart) {
    auto database = create();
    database.execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a TEXT, b TEXT, c INT)");
    for (int i = 0; i < 100; ++i)
        database.insert("t", {std::monostate{}, fmt::format("t alpha {}", i),
                              fmt::format("beta {}", i * 7), std::int64_t{i} * 100});
    database.execute("UPDATE t SET a = a || ' and a good deal more' WHERE id % 10 = 1");
    database.execute("DELETE FROM t WHERE id = 55");
    EXPECT_EQ(recovered(database), (Counts{{"t deleted", 1}, {"t earlier", 10}}));
    EXPECT_EQ(facts_.tables[1].gone, 1u);
}

TEST_F(RecoveryEngineTest, FollowsOverflowPagesAndListsNoFragmentOfALiveRow) {
    auto database = create();
    database.execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a TEXT, b INT)");
    for (std::size_t i = 1; i <= 60; ++i)
        database.insert(
            "t", {std::monostate{}, fmt::format("t {} ", i) + std::string(6000 + i * 40, 'x'),
                  static_cast<std::int64_t>(i)});
    database.execute("DELETE FROM t WHERE id = 20");
    const auto counts = recovered(database, true);
    for (const auto& [what, count] : counts) {
        EXPECT_TRUE(what == "t deleted" || what == "t fragment") << what;
        EXPECT_EQ(count, 1) << what;
    }
}

TEST_F(RecoveryEngineTest, SeesThatDeletedBytesAreOverwritten) {
    SqliteLayout layout;
    layout.secureDelete = true;
    auto database = create(layout);
    database.execute("CREATE TABLE t(id INTEGER PRIMARY KEY AUTOINCREMENT, a TEXT)");
    for (int i = 0; i < 200; ++i)
        database.insert("t", {std::monostate{}, fmt::format("t words of row {}", i)});
    database.execute("DELETE FROM t WHERE id % 3 = 0");
    EXPECT_EQ(recovered(database), Counts{});
    EXPECT_TRUE(facts_.secureDeleteSeen());
    EXPECT_EQ(facts_.tables[1].gone, 66u);
}

}  // namespace
}  // namespace salvor::deep
