#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/CommandLine.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor::cli {
namespace {

using nlohmann::json;
using testing::HasSubstr;

/// A database with deleted, changed and live rows, a dropped table and overwritten bytes.
class RecoverCommandTest : public testing::Test {
  protected:
    void SetUp() override {
        SqliteFile database(file_, {});
        database.execute(
            "CREATE TABLE note(id INTEGER PRIMARY KEY AUTOINCREMENT, title TEXT, body "
            "BLOB, rank REAL)");
        database.execute("CREATE TABLE gone(a TEXT, b INTEGER)");
        for (std::int64_t i = 1; i <= 60; ++i) {
            const std::string number = std::to_string(i);
            database.insert("note", {i, "title of note " + number, SqliteBlob{"\x01\xFE" + number},
                                     static_cast<double>(i) + 0.5});
            database.insert("gone", {"a row of gone " + number, i});
        }
        database.execute("DELETE FROM note WHERE id IN (7, 8, 30)");
        database.execute("DROP TABLE gone");
        database.close();
    }

    static std::vector<json> rows(const CommandLine& run) {
        std::vector<json> all;
        std::istringstream lines(run.out);
        for (std::string line; std::getline(lines, line);) all.push_back(json::parse(line));
        return all;
    }

    TempFolder folder_;
    std::string file_ = (folder_ / "notes.db").string();
};

TEST_F(RecoverCommandTest, PrintsDeletedAndDroppedRowsAndLeavesTheFolderAlone) {
    const auto before = hashTree(folder_.path());
    const auto run = runSalvor({"recover", file_});
    EXPECT_EQ(run.status, 0) << run.err;
    std::size_t deleted = 0;
    std::size_t dropped = 0;
    for (const json& row : rows(run)) {
        if (row["state"] == "dropped") ++dropped;
        if (row["state"] != "deleted") continue;
        ++deleted;
        const std::string title = row["columns"]["title"];
        EXPECT_THAT(title,
                    testing::AnyOf("title of note 7", "title of note 8", "title of note 30"));
        const std::string number = title.substr(14);
        EXPECT_EQ(row["columns"]["rank"], std::stod(number) + 0.5);
        EXPECT_THAT(std::string(row["columns"]["body"]["hex"]), testing::StartsWith("01fe"));
        EXPECT_EQ(row["table"], "note");
        EXPECT_EQ(row["origins"][0]["file"], "main");
        EXPECT_EQ(row["columns"]["id"], row["rowId"]);
    }
    EXPECT_EQ(deleted, 3u);
    EXPECT_GE(dropped, 55u);
    EXPECT_EQ(hashTree(folder_.path()), before);
}

TEST_F(RecoverCommandTest, ChoosesTablesAndListsLiveRows) {
    const auto run = runSalvor({"recover", file_, "--table", "NOTE", "--table", "none", "--live"});
    const auto all = rows(run);
    EXPECT_EQ(std::count_if(all.begin(), all.end(),
                            [](const json& row) { return row["state"] == "live"; }),
              57);
    for (const json& row : all) EXPECT_EQ(row["table"], "note");
    EXPECT_THAT(run.err, HasSubstr("there is no table \"none\""));
}

TEST_F(RecoverCommandTest, SumsUpWhatIsLeft) {
    const auto run = runSalvor({"recover", "--summary", file_});
    const json summary = json::parse(run.out);
    EXPECT_EQ(summary["tables"][0]["live"], 57);
    EXPECT_EQ(summary["tables"][0]["deleted"], 3);
    EXPECT_EQ(summary["tables"][0]["rowsGone"], 3);
    EXPECT_EQ(summary["tables"][1]["dropped"], true);
    EXPECT_FALSE(summary["secureDelete"]);
}

TEST_F(RecoverCommandTest, WritesADatabaseAndNeverOverAnother) {
    const std::string out = (folder_ / "out.db").string();
    EXPECT_EQ(runSalvor({"recover", file_, "--sqlite", out, "--summary"}).status, 0);
    {
        SqliteFile written{std::filesystem::path(out)};
        EXPECT_EQ(
            written.number("SELECT count(*) FROM note WHERE _state='deleted' AND title LIKE "
                           "'title of note %' AND typeof(body)='blob' AND _origin LIKE 'main%'"),
            3);
    }
    const auto again = runSalvor({"recover", file_, "--sqlite", out});
    EXPECT_EQ(again.status, 5);
    EXPECT_THAT(again.err, HasSubstr("out.db"));
}

TEST_F(RecoverCommandTest, TellsWhatItCannotRead) {
    writeWholeFile(folder_ / "text", "no database");
    const std::string text = (folder_ / "text").string();
    EXPECT_EQ(runSalvor({"recover", text}).status, 3);
    EXPECT_EQ(runSalvor({"recover", file_, "--wal", text + "-none"}).status, 3);
    EXPECT_EQ(runSalvor({"recover"}).status, 2);
    std::filesystem::resize_file(file_, 5000);
    const auto cut = runSalvor({"recover", file_});
    EXPECT_EQ(cut.status, 0);
    EXPECT_THAT(cut.err, HasSubstr("shorter than its header says"));
}

}  // namespace
}  // namespace salvor::cli
