#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>

#include "file_generator.h"

namespace salvor::reference {
namespace {

enum class Kind { Integer, Text, Real, Blob, Any };

class SqliteFile {
  public:
    SqliteFile(RandomSource& random, std::string path) : random_(random), path_(std::move(path)) {}

    Buffer make();
    std::vector<PlannedPattern> patterns();

  private:
    void run(const std::string& statement);
    void createTable();
    void insertRows(int count);
    void bindColumn(sqlite3_stmt* statement, int index, Kind kind);
    std::string textValue();
    void deleteRows();
    PlannedPattern patternFor(bool withRowId);

    RandomSource& random_;
    std::string path_;
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
    std::vector<Kind> kinds_;
};

void SqliteFile::run(const std::string& statement) {
    if (sqlite3_exec(database_.get(), statement.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(statement + ": " + sqlite3_errmsg(database_.get()));
}

void SqliteFile::createTable() {
    constexpr std::array kPageSizes{512,  512,  512,  1024, 1024, 1024,  1024,
                                    2048, 2048, 4096, 4096, 8192, 32768, 65536};
    constexpr std::array kVacuums{"NONE", "FULL", "INCREMENTAL"};
    constexpr std::array kNames{"INTEGER", "TEXT", "REAL", "BLOB", ""};
    run("PRAGMA page_size=" + std::to_string(random_.pick(kPageSizes)));
    run(std::string("PRAGMA auto_vacuum=") + random_.pick(kVacuums));
    run("PRAGMA journal_mode=OFF");
    run("PRAGMA synchronous=OFF");
    run(random_.chance(15) ? "PRAGMA secure_delete=ON" : "PRAGMA secure_delete=OFF");
    std::string statement = "CREATE TABLE t (id INTEGER PRIMARY KEY";
    const auto count = random_.between(1, 24);
    for (std::int64_t i = 0; i < count; ++i) {
        kinds_.push_back(static_cast<Kind>(random_.below(5)));
        if (random_.chance(30)) kinds_.back() = Kind::Text;
        statement +=
            ", c" + std::to_string(i) + " " + kNames.at(static_cast<std::size_t>(kinds_.back()));
    }
    run(statement + ")");
    if (random_.chance(40)) run("CREATE INDEX byFirst ON t (c0)");
    if (random_.chance(30)) run("CREATE TABLE other (a, b TEXT)");
}

std::string SqliteFile::textValue() {
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

void SqliteFile::bindColumn(sqlite3_stmt* statement, int index, Kind kind) {
    if (random_.chance(10)) return;
    if (kind == Kind::Any) kind = static_cast<Kind>(random_.below(4));
    if (kind == Kind::Integer) {
        const auto shift = random_.between(1, 63);
        const auto value = static_cast<std::int64_t>(random_.bits() >> shift);
        sqlite3_bind_int64(statement, index, random_.chance(20) ? -value : value);
    } else if (kind == Kind::Real) {
        sqlite3_bind_double(statement, index, static_cast<double>(random_.below(1000000)) / 8);
    } else {
        const std::string text = textValue();
        const auto length = static_cast<int>(text.size());
        if (kind == Kind::Text)
            sqlite3_bind_text(statement, index, text.data(), length, SQLITE_TRANSIENT);
        else
            sqlite3_bind_blob(statement, index, text.data(), length, SQLITE_TRANSIENT);
    }
}

void SqliteFile::insertRows(int count) {
    std::string statement = "INSERT INTO t VALUES (NULL";
    for (std::size_t i = 0; i < kinds_.size(); ++i) statement += ",?";
    statement += ")";
    sqlite3_stmt* insert = nullptr;
    if (sqlite3_prepare_v2(database_.get(), statement.c_str(), -1, &insert, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database_.get()));
    for (int row = 0; row < count; ++row) {
        sqlite3_reset(insert);
        sqlite3_clear_bindings(insert);
        for (std::size_t i = 0; i < kinds_.size(); ++i)
            bindColumn(insert, static_cast<int>(i) + 1, kinds_[i]);
        sqlite3_step(insert);
    }
    sqlite3_finalize(insert);
}

void SqliteFile::deleteRows() {
    for (auto times = random_.below(4); times > 0; --times) {
        const auto first = random_.below(100);
        if (random_.chance(50))
            run("DELETE FROM t WHERE id % 100 BETWEEN " + std::to_string(first) + " AND " +
                std::to_string(first + random_.below(60)));
        else
            run("DELETE FROM t WHERE id % " + std::to_string(random_.between(2, 7)) + " = 1");
        if (random_.chance(30)) run("DELETE FROM t WHERE c0 IS NULL");
        if (random_.chance(30)) insertRows(5);
    }
}

Buffer SqliteFile::make() {
    std::filesystem::remove(path_);
    sqlite3* database = nullptr;
    const int opened = sqlite3_open(path_.c_str(), &database);
    database_.reset(database);
    if (opened != SQLITE_OK) throw std::runtime_error("no database at " + path_);
    createTable();
    run("BEGIN");
    insertRows(static_cast<int>(random_.between(5, 120)));
    run("COMMIT");
    deleteRows();
    database_.reset();
    std::ifstream file(path_, std::ios::binary);
    return Buffer(std::istreambuf_iterator<char>(file), {});
}

PlannedPattern SqliteFile::patternFor(bool withRowId) {
    // Of a cell: row id, header length, the NULL of the row-id alias, then the columns.
    PlannedPattern pattern;
    pattern.columns = withRowId ? std::vector<std::vector<int>>{{1}, {0}, {0}}
                                : std::vector<std::vector<int>>{{0}, {0}};
    for (const Kind kind : kinds_) {
        if (random_.chance(4)) break;
        if (kind == Kind::Text || kind == Kind::Blob)
            pattern.columns.push_back(random_.chance(60) ? std::vector<int>{0, -1}
                                                         : std::vector<int>{-2, 0, 12});
        else if (kind == Kind::Any)
            pattern.columns.push_back({-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
        else
            pattern.columns.push_back({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    }
    pattern.versions = {"iOS56"};
    addMappings(random_, pattern);
    return pattern;
}

std::vector<PlannedPattern> SqliteFile::patterns() {
    std::vector<PlannedPattern> patterns{patternFor(random_.chance(80))};
    if (random_.chance(30)) patterns.push_back(patternFor(random_.chance(50)));
    return patterns;
}

}  // namespace

Buffer makeSqliteFile(RandomSource& random, const std::string& folder,
                      std::vector<PlannedPattern>& patterns) {
    SqliteFile file(random, folder + "/made.db");
    Buffer bytes = file.make();
    patterns = file.patterns();
    return bytes;
}

}  // namespace salvor::reference
