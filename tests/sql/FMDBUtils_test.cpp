#include "sql/FMDBUtils.h"

#include <fstream>
#include <map>
#include <stop_token>
#include <sys/stat.h>
#include <vector>

#include "tests/support/ScanFixture.h"

namespace salvor {
namespace {

using Protected = ScanFixture;
namespace fs = std::filesystem;

constexpr const char* kMessages =
    "CREATE TABLE message (text TEXT);"
    "INSERT INTO message VALUES ('one'), ('two');";

/// Rows of one statement on a fresh protected connection, -1 when it does not prepare.
int rowsOf(const std::string& path, const std::string& sql) {
    FMDBUtils db(path, SourcePolicy::Protected);
    EXPECT_TRUE(db.openDatabase());
    auto rows = db.executeQuery(sql);
    if (db.hadError()) return -1;
    int count = 0;
    while (rows.next()) ++count;
    return count;
}

TEST_F(Protected, RefusesWhateverIsNoPlainReading) {
    const auto path = write("sms.db", kMessages);
    const auto other = write("other.db", "CREATE TABLE t (a);");
    const std::string spliced = "SELECT * FROM message WHERE text = 'x";
    const std::string cases[] = {
        "DELETE FROM message",
        "INSERT INTO message VALUES (1)",
        "CREATE TEMP TABLE t (a)",
        "PRAGMA user_version",
        "PRAGMA writable_schema = 1",
        "SELECT * FROM pragma_table_info('message')",
        "ATTACH '" + other + "' AS other",
        "VACUUM",
        "BEGIN",
        "SELECT load_extension('x')",
        "SELECT zeroblob(100000000)",
        "SELECT * FROM json_each('[1]')",
        spliced + "'; DELETE FROM message; --'",
        spliced + "'; ATTACH '" + other + "' AS o; --'",
        spliced + "'; SELECT 1 --'",
        spliced +
            "' UNION ALL SELECT * FROM (WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL "
            "SELECT x + 1 FROM c) SELECT x FROM c) --'",
        spliced,
        "",
    };
    for (const auto& sql : cases) EXPECT_EQ(rowsOf(path, sql), -1) << sql;
    EXPECT_EQ(rowsOf(path, "SELECT * FROM message; -- no second statement\n ;"), 2);
    EXPECT_EQ(rowsOf(path, "SELECT * FROM message"), 2);
}

TEST_F(Protected, RunsNothingThatTheFileBrings) {
    const auto view = write("view.db",
                            "CREATE TABLE real (text); INSERT INTO real VALUES ('a');"
                            "CREATE VIEW message AS SELECT text FROM real;");
    EXPECT_EQ(rowsOf(view, "SELECT * FROM message"), -1);
    EXPECT_EQ(rowsOf(view, "SELECT * FROM real"), 1);
    const auto table = write("virtual.db", "CREATE VIRTUAL TABLE message USING fts3(text);");
    EXPECT_EQ(rowsOf(table, "SELECT * FROM message"), -1);
    const auto trigger = write("trigger.db", std::string(kMessages) +
                                                 "CREATE TRIGGER t AFTER DELETE ON message BEGIN "
                                                 "DELETE FROM message; END;");
    EXPECT_EQ(rowsOf(trigger, "SELECT * FROM message"), 2);
}

TEST_F(Protected, EndsAStatementThatDoesNotEnd) {
    const auto path = write("sms.db",
                            "CREATE TABLE t (a); INSERT INTO t WITH RECURSIVE c(x) AS (SELECT 1 "
                            "UNION ALL SELECT x + 1 FROM c LIMIT 1000) SELECT x FROM c;");
    FMDBUtils db(path, SourcePolicy::Protected);
    ASSERT_TRUE(db.openDatabase());
    const std::string endless =
        "SELECT count(*) FROM t a, t b, t c, t d, t e WHERE a.a + b.a + c.a + d.a + e.a = 0";
    for (int run = 0; run < 3; ++run) {
        auto rows = db.executeQuery(endless);
        EXPECT_FALSE(db.hadError());
        EXPECT_FALSE(rows.next());
        EXPECT_TRUE(rows.hadError());
        EXPECT_FALSE(rows.next());
    }
    auto rows = db.executeQuery("SELECT count(*) AS n FROM t");
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.intForColumn("n"), 1000);
}

TEST_F(Protected, ACancelEndsTheNextStep) {
    const auto path = write("sms.db", kMessages);
    std::stop_source source;
    FMDBUtils db(path, SourcePolicy::Protected, source.get_token());
    ASSERT_TRUE(db.openDatabase());
    auto rows = db.executeQuery("SELECT * FROM message");
    EXPECT_TRUE(rows.next());
    source.request_stop();
    EXPECT_FALSE(rows.next());
    EXPECT_FALSE(db.executeQuery("SELECT * FROM message").next());
}

struct Ends : DatabaseWatch {
    std::vector<ReadingEnd> heard;
    void readingEnded(const ReadingEnd& end) override { heard.push_back(end); }
};

TEST_F(Protected, TellsHowTheReadingOfAFileEnded) {
    using Kind = ReadingEnd::Kind;
    constexpr auto kThousand =
        "CREATE TABLE t (a, b); INSERT INTO t WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT "
        "x + 1 FROM c LIMIT 1000) SELECT x, 'a text that fills pages' FROM c;";
    const auto whole = write("whole.db", kThousand);
    const auto broken = write("broken.db", kThousand);
    fs::resize_file(broken, fs::file_size(broken) - 8192);
    fs::resize_file(broken, fs::file_size(broken) + 8192);
    writeWholeFile(folder / "text", std::string(5000, 'x'));
    struct Case {
        std::string path;
        std::initializer_list<const char*> statements;
        std::optional<Kind> kind;
        const char* reason;
        bool rows;
    };
    constexpr auto kAll = "SELECT * FROM t";
    constexpr auto kForeign = "SELECT c FROM t";
    constexpr auto kEndless = "SELECT a.a FROM t a, t b, t c, t d WHERE a.a + b.a + c.a + d.a = 0";
    const Case cases[] = {
        {whole, {kAll}, Kind::Whole, "", true},
        {whole, {kForeign, kAll}, Kind::Whole, "", true},
        {whole, {kForeign, kForeign}, Kind::NotPrepared, "no such column: c", false},
        {whole, {kEndless}, Kind::Budget, "takes more steps than a file of its size", false},
        {broken, {kAll}, Kind::Broken, "database disk image is malformed", true},
        {folder / "text", {kAll, kForeign}, Kind::Broken, "file is not a database", false},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.path + " " + *one.statements.begin());
        const auto ends = std::make_shared<Ends>();
        FMDBUtils db(one.path, SourcePolicy::Protected, {}, ends);
        ASSERT_TRUE(db.openDatabase());
        auto rows = db.executeList(one.statements);
        while (rows.next()) continue;
        ASSERT_EQ(ends->heard.size(), 1U);
        EXPECT_EQ(ends->heard[0].kind, one.kind);
        EXPECT_THAT(ends->heard[0].reason, testing::HasSubstr(one.reason));
        EXPECT_EQ(ends->heard[0].rows > 0, one.rows);
    }
    std::stop_source cancelled;
    const auto ends = std::make_shared<Ends>();
    FMDBUtils db(whole, SourcePolicy::Protected, cancelled.get_token(), ends);
    ASSERT_TRUE(db.openDatabase());
    db.executeQuery(kForeign);
    auto rows = db.executeQuery(kAll);
    cancelled.request_stop();
    EXPECT_FALSE(rows.next());
    EXPECT_TRUE(ends->heard.empty()) << "a cancel and a look-up that does not fit say nothing";
}

/// Names, sizes and time stamps of a folder and its files. Listing the folder is itself an access
/// to it, so its own access time is left out.
std::map<std::string, std::string> stampsOf(const std::filesystem::path& folder) {
    std::map<std::string, std::string> stamps;
    const auto add = [&](const std::filesystem::path& path) {
        struct stat info {};
        ASSERT_EQ(stat(path.c_str(), &info), 0);
        auto times = std::vector{info.st_mtim, info.st_ctim};
        if (path != folder) times.push_back(info.st_atim);
        auto& text = stamps[path.string()];
        for (const auto& time : times) {
            text += std::to_string(time.tv_sec) + "." + std::to_string(time.tv_nsec) + " ";
        }
        text += std::to_string(info.st_size);
    };
    add(folder);
    for (const auto& entry : std::filesystem::directory_iterator(folder)) add(entry.path());
    return stamps;
}

TEST_F(Protected, LeavesTheFolderAsItWas) {
    write("wal.db", std::string("PRAGMA journal_mode = WAL;") + kMessages);
    write("odd ?#%& n\xC3\xA4me.db", kMessages);
    write("empty.db", "");
    std::filesystem::create_directory(folder / "folder.db");
    ASSERT_FALSE(std::filesystem::exists(folder / "wal.db-wal"));
    const auto before = stampsOf(folder);

    EXPECT_EQ(rowsOf(folder / "wal.db", "SELECT * FROM message"), 2);
    EXPECT_EQ(rowsOf("/" + (folder / "wal.db").string(), "SELECT * FROM message"), 2);
    EXPECT_EQ(rowsOf(folder / "odd ?#%& n\xC3\xA4me.db", "SELECT * FROM message"), 2);
    EXPECT_EQ(rowsOf(folder / "empty.db", "SELECT * FROM message"), -1);
    EXPECT_FALSE(FMDBUtils(folder / "missing.db", SourcePolicy::Protected).openDatabase());
    EXPECT_FALSE(FMDBUtils(folder / "folder.db", SourcePolicy::Protected).openDatabase());

    EXPECT_EQ(stampsOf(folder), before);
}

TEST_F(Protected, AFileThatIsNoDatabaseOpensAndAnswersNothing) {
    std::ofstream(folder / "noise.db") << std::string(5000, 'x');
    EXPECT_EQ(rowsOf(folder / "noise.db", "SELECT * FROM message"), -1);
}

using Ordinary = ScanFixture;

TEST_F(Ordinary, CreatesAndWrites) {
    FMDBUtils db(folder / "new.db");
    EXPECT_EQ(db.sharedDB(), nullptr);
    EXPECT_FALSE(db.executeQuery("SELECT 1").next());
    EXPECT_TRUE(db.hadError());
    ASSERT_TRUE(db.openDatabase());
    EXPECT_NE(db.sharedDB(), nullptr);
    db.executeQuery("CREATE TABLE t (a)").next();
    db.executeQuery("INSERT INTO t VALUES (?)", {std::string("x")}).next();
    auto rows = db.executeQuery("SELECT a FROM t WHERE a = ?", {std::string("x")});
    EXPECT_TRUE(rows.next());
    ASSERT_TRUE(db.openDatabase());  // the rows keep the earlier handle alive
    EXPECT_EQ(rows.stringForColumn("a"), "x");
}

using Rows = ScanFixture;

TEST_F(Rows, AreReadByTheColumnRules) {
    FMDBUtils db(folder / "new.db");
    ASSERT_TRUE(db.openDatabase());
    auto rows = db.executeQuery(
        "SELECT 4294967298 AS Big, '12abc' AS text, NULL AS none, 1 AS twice, 2 AS TWICE, "
        "x'' AS blank, x'FF61' AS broken, CAST(x'6100' AS TEXT) AS zero, 2.75 AS real, '' AS void");
    const auto hasNoRow = [&rows] {
        return rows.intForColumn("Big") == 0 && !rows.stringForColumn("text");
    };
    EXPECT_TRUE(hasNoRow());
    ASSERT_TRUE(rows.next());
    const struct {
        const char* column;
        Text text;
        std::int64_t number;
    } cases[] = {
        {"big", "4294967298", 4294967298},
        {"text", "12abc", 12},
        {"none", {}, 0},
        {"twice", "2", 2},
        {"blank", "", 0},
        {"broken", {}, 0},
        {"zero", std::string("a\0", 2), 0},
        {"real", "2.75", 2},
        {"void", "", 0},
        {"lacking", {}, 0},
    };
    for (const auto& [column, text, number] : cases) {
        SCOPED_TRACE(column);
        EXPECT_EQ(rows.stringForColumn(column), text);
        EXPECT_EQ(rows.longLongIntForColumn(column), number);
        EXPECT_EQ(rows.longForColumn(column), number);
        EXPECT_EQ(rows.intForColumn(column), static_cast<std::int32_t>(number));
        EXPECT_EQ(rows.boolForColumn(column), number != 0);
    }
    EXPECT_TRUE(rows.columnIsNull("none"));
    EXPECT_EQ(rows.dataForColumn("blank"), "");
    EXPECT_EQ(rows.dataForColumn("broken"), std::string("\xFF") + "a");
    EXPECT_EQ(rows.doubleForColumn("real"), 2.75);
    EXPECT_EQ(rows.doubleForColumn("lacking"), 0);
    EXPECT_EQ(rows.stringForColumnIndex(0), "4294967298");
    for (const int index : {-1, 10, 99}) EXPECT_EQ(rows.stringForColumnIndex(index), std::nullopt);
    EXPECT_FALSE(rows.next());
    EXPECT_FALSE(rows.hadError());
    EXPECT_TRUE(hasNoRow());
    rows.close();
    EXPECT_FALSE(rows.next());
}

TEST_F(Rows, TextsMustBeStrictUtf8) {
    FMDBUtils db(folder / "new.db");
    ASSERT_TRUE(db.openDatabase());
    const std::pair<const char*, bool> cases[] = {
        {"41", true},        {"C3A4", true},    {"EFBFBD", true},  {"F48FBFBF", true},
        {"C0AF", false},     {"E09FBF", false}, {"EDA080", false}, {"F08FBFBF", false},
        {"F4908080", false}, {"80", false},     {"E282", false},   {"C341", false}};
    for (const auto& [hex, valid] : cases) {
        auto rows = db.executeQuery("SELECT CAST(x'" + std::string(hex) + "' AS TEXT) AS t");
        ASSERT_TRUE(rows.next());
        EXPECT_EQ(rows.stringForColumn("t").has_value(), valid) << hex;
    }
}

}  // namespace
}  // namespace salvor
