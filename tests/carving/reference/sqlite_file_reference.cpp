#include <array>

#include "file_generator.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor::reference {
namespace {

enum class Kind { Integer, Text, Real, Blob, Any };

SqliteLayout randomLayout(RandomSource& random) {
    constexpr std::array kPageSizes{512U,  512U,  512U,  1024U, 1024U, 1024U,  1024U,
                                    2048U, 2048U, 4096U, 4096U, 8192U, 32768U, 65536U};
    SqliteLayout layout;
    layout.pageSize = random.pick(kPageSizes);
    layout.autoVacuum = static_cast<AutoVacuum>(random.below(3));
    layout.secureDelete = random.chance(15);
    return layout;
}

/// A database with one table whose columns are of random kinds.
class RandomDatabase {
  public:
    RandomDatabase(RandomSource& random, const std::string& path)
        : random_(random), database_(path, randomLayout(random)) {}

    void fill();
    std::vector<PlannedPattern> patterns();

  private:
    void createTable();
    void insertRows(std::int64_t count);
    SqliteValue value(Kind kind);
    std::string textValue();
    void deleteRows();
    PlannedPattern patternFor(bool withRowId);

    RandomSource& random_;
    SqliteFile database_;
    std::vector<Kind> kinds_;
};

void RandomDatabase::createTable() {
    constexpr std::array kNames{"INTEGER", "TEXT", "REAL", "BLOB", ""};
    std::string statement = "CREATE TABLE t (id INTEGER PRIMARY KEY";
    const auto count = random_.between(1, 24);
    for (std::int64_t i = 0; i < count; ++i) {
        kinds_.push_back(random_.chance(30) ? Kind::Text : static_cast<Kind>(random_.below(5)));
        statement +=
            ", c" + std::to_string(i) + " " + kNames.at(static_cast<std::size_t>(kinds_.back()));
    }
    database_.execute(statement + ")");
    if (random_.chance(40)) database_.execute("CREATE INDEX byFirst ON t (c0)");
    if (random_.chance(30)) database_.execute("CREATE TABLE other (a, b TEXT)");
}

std::string RandomDatabase::textValue() {
    constexpr std::array kTexts{"2013-07-04 12:30:00",  "+441632-960-123 call",
                                "plain words",          "3f2504e0-4f89-11d3-9a0c-0305e82c3301",
                                "p:0/someone@-example", "abcdefghij-klm",
                                "caf\xC3\xA9-bar -"};
    if (random_.chance(60)) return random_.pick(kTexts);
    std::string text;
    for (auto length = random_.below(random_.chance(5) ? 900 : 40); length > 0; --length)
        text += random_.chance(8) ? '-' : static_cast<char>('a' + random_.below(26));
    return text;
}

SqliteValue RandomDatabase::value(Kind kind) {
    if (random_.chance(10)) return {};
    if (kind == Kind::Any) kind = static_cast<Kind>(random_.below(4));
    if (kind == Kind::Real) return static_cast<double>(random_.below(1000000)) / 8;
    if (kind == Kind::Text) return textValue();
    if (kind == Kind::Blob) return SqliteBlob{textValue()};
    const auto number = static_cast<std::int64_t>(random_.bits() >> random_.between(1, 63));
    return random_.chance(20) ? -number : number;
}

void RandomDatabase::insertRows(std::int64_t count) {
    for (; count > 0; --count) {
        SqliteRow row{SqliteValue()};
        for (const Kind kind : kinds_) row.push_back(value(kind));
        database_.insert("t", row);
    }
}

void RandomDatabase::deleteRows() {
    for (auto times = random_.below(4); times > 0; --times) {
        const auto first = random_.below(100);
        database_.execute(random_.chance(50)
                              ? "DELETE FROM t WHERE id % 100 BETWEEN " + std::to_string(first) +
                                    " AND " + std::to_string(first + random_.below(60))
                              : "DELETE FROM t WHERE id % " +
                                    std::to_string(random_.between(2, 7)) + " = 1");
        if (random_.chance(30)) database_.execute("DELETE FROM t WHERE c0 IS NULL");
        if (random_.chance(30)) insertRows(5);
    }
}

void RandomDatabase::fill() {
    createTable();
    database_.execute("BEGIN");
    insertRows(random_.between(5, 120));
    database_.execute("COMMIT");
    deleteRows();
    database_.close();
}

PlannedPattern RandomDatabase::patternFor(bool withRowId) {
    const std::vector<std::vector<int>> textCodes{{0, -1}, {-2, 0, 12}};
    // Of a cell: row id, header length, the NULL of the row-id alias, then the columns.
    PlannedPattern pattern;
    pattern.columns.assign(withRowId ? 3 : 2, {0});
    pattern.columns[0] = {withRowId ? 1 : 0};
    for (const Kind kind : kinds_) {
        if (random_.chance(4)) break;
        if (kind == Kind::Text || kind == Kind::Blob)
            pattern.columns.push_back(textCodes[random_.chance(60) ? 0 : 1]);
        else
            pattern.columns.push_back({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
        if (kind == Kind::Any) pattern.columns.back().push_back(-1);
    }
    pattern.versions = {"iOS56"};
    addMappings(random_, pattern);
    return pattern;
}

std::vector<PlannedPattern> RandomDatabase::patterns() {
    std::vector<PlannedPattern> patterns{patternFor(random_.chance(80))};
    if (random_.chance(30)) patterns.push_back(patternFor(random_.chance(50)));
    return patterns;
}

}  // namespace

Buffer makeSqliteFile(RandomSource& random, const std::string& folder,
                      std::vector<PlannedPattern>& patterns) {
    const std::string path = folder + "/made.db";
    RandomDatabase database(random, path);
    database.fill();
    patterns = database.patterns();
    const std::string bytes = readWholeFile(path);
    return {bytes.begin(), bytes.end()};
}

}  // namespace salvor::reference
