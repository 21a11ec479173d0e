#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct sqlite3;

namespace salvor {

enum class AutoVacuum { None, Full, Incremental };
const char* toString(AutoVacuum mode);

/// A value to be stored: NULL, integer, real, text or blob.
struct SqliteBlob {
    std::string bytes;
    friend bool operator==(const SqliteBlob&, const SqliteBlob&) = default;
};
using SqliteValue = std::variant<std::monostate, std::int64_t, double, std::string, SqliteBlob>;
using SqliteRow = std::vector<SqliteValue>;

/// How the file of a sample database is laid out.
struct SqliteLayout {
    std::uint32_t pageSize = 4096;
    AutoVacuum autoVacuum = AutoVacuum::None;
    bool writeAheadLog = false;  ///< header says WAL; the log itself is written back on close
    bool secureDelete = false;
};

/// A database file that tests write through the real SQLite. Every failure throws
/// std::runtime_error with SQLite's own words. `close` leaves one file without log or journal.
class SqliteFile {
  public:
    /// Makes a new database; an existing file is overwritten.
    SqliteFile(const std::filesystem::path& path, const SqliteLayout& layout);
    /// Opens an existing one as it is.
    explicit SqliteFile(const std::filesystem::path& path);
    ~SqliteFile();
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    void execute(const std::string& sql);
    void execute(const std::string& sql, const SqliteRow& parameters);
    /// Inserts one row with a value for every column and returns its row id.
    std::int64_t insert(const std::string& table, const SqliteRow& row);
    /// The rows of a query, values as SQLite stores them.
    std::vector<SqliteRow> query(const std::string& sql, const SqliteRow& parameters = {});
    std::int64_t number(const std::string& sql);
    void close();

  private:
    void open(const std::filesystem::path& path);

    std::filesystem::path path_;
    sqlite3* handle_ = nullptr;
};

}  // namespace salvor
