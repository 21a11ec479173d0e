#include "tools/sample/SqliteFile.h"

#include <sqlite3.h>
#include <stdexcept>

namespace salvor {
namespace {

[[noreturn]] void fail(sqlite3* handle, const std::string& what) {
    throw std::runtime_error(what + ": " + sqlite3_errmsg(handle));
}

class Statement {
  public:
    Statement(sqlite3* handle, const std::string& sql) : handle_(handle) {
        if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement_, nullptr) != SQLITE_OK) {
            fail(handle, sql);
        }
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// The values must outlive the steps: they are bound without a copy.
    void bind(const SqliteRow& row) {
        for (std::size_t i = 0; i < row.size(); ++i) bindOne(static_cast<int>(i) + 1, row[i]);
    }
    bool step() {
        const int result = sqlite3_step(statement_);
        if (result == SQLITE_ROW) return true;
        if (result != SQLITE_DONE) fail(handle_, sqlite3_sql(statement_));
        return false;
    }
    SqliteRow row() const {
        SqliteRow values;
        for (int i = 0; i < sqlite3_column_count(statement_); ++i) values.push_back(column(i));
        return values;
    }

  private:
    void bindOne(int index, const SqliteValue& value) {
        int result = SQLITE_OK;
        if (const auto* integer = std::get_if<std::int64_t>(&value)) {
            result = sqlite3_bind_int64(statement_, index, *integer);
        } else if (const auto* real = std::get_if<double>(&value)) {
            result = sqlite3_bind_double(statement_, index, *real);
        } else if (const auto* text = std::get_if<std::string>(&value)) {
            result = sqlite3_bind_text64(statement_, index, text->data(), text->size(), nullptr,
                                         SQLITE_UTF8);
        } else if (const auto* blob = std::get_if<SqliteBlob>(&value)) {
            result = sqlite3_bind_blob64(statement_, index, blob->bytes.data(), blob->bytes.size(),
                                         nullptr);
        } else {
            result = sqlite3_bind_null(statement_, index);
        }
        if (result != SQLITE_OK) fail(handle_, "bind");
    }
    SqliteValue column(int i) const {
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, i));
        switch (sqlite3_column_type(statement_, i)) {
            case SQLITE_INTEGER:
                return std::int64_t{sqlite3_column_int64(statement_, i)};
            case SQLITE_FLOAT:
                return sqlite3_column_double(statement_, i);
            case SQLITE_TEXT:
                return bytesOf(sqlite3_column_text(statement_, i), size);
            case SQLITE_BLOB:
                return SqliteBlob{bytesOf(sqlite3_column_blob(statement_, i), size)};
            default:
                return std::monostate{};
        }
    }
    static std::string bytesOf(const void* data, std::size_t size) {
        return size == 0 ? std::string() : std::string(static_cast<const char*>(data), size);
    }

    sqlite3* handle_;
    sqlite3_stmt* statement_ = nullptr;
};

}  // namespace

const char* toString(AutoVacuum mode) {
    switch (mode) {
        case AutoVacuum::Full:
            return "full";
        case AutoVacuum::Incremental:
            return "incremental";
        case AutoVacuum::None:
            break;
    }
    return "none";
}

SqliteFile::SqliteFile(const std::filesystem::path& path, const SqliteLayout& layout)
    : path_(path) {
    std::filesystem::remove(path);
    open(path);
    execute("PRAGMA page_size=" + std::to_string(layout.pageSize));
    execute(std::string("PRAGMA auto_vacuum=") + toString(layout.autoVacuum));
    execute(layout.writeAheadLog ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE");
    // Distributions differ in the default, so it is always said.
    execute(layout.secureDelete ? "PRAGMA secure_delete=ON" : "PRAGMA secure_delete=OFF");
    execute("PRAGMA synchronous=OFF");
    execute("PRAGMA cell_size_check=OFF");
}

SqliteFile::SqliteFile(const std::filesystem::path& path) : path_(path) {
    open(path);
    execute("PRAGMA secure_delete=OFF");
}

SqliteFile::~SqliteFile() {
    sqlite3_close_v2(handle_);
}

void SqliteFile::open(const std::filesystem::path& path) {
    if (sqlite3_open(path.c_str(), &handle_) != SQLITE_OK) fail(handle_, path.string());
}

void SqliteFile::execute(const std::string& sql) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(handle_, sql);
    }
}

void SqliteFile::execute(const std::string& sql, const SqliteRow& parameters) {
    query(sql, parameters);
}

std::int64_t SqliteFile::insert(const std::string& table, const SqliteRow& row) {
    std::string sql = "INSERT INTO " + table + " VALUES(";
    for (std::size_t i = 0; i < row.size(); ++i) sql += i == 0 ? "?" : ",?";
    query(sql + ")", row);
    return sqlite3_last_insert_rowid(handle_);
}

std::vector<SqliteRow> SqliteFile::query(const std::string& sql, const SqliteRow& parameters) {
    Statement statement(handle_, sql);
    statement.bind(parameters);
    std::vector<SqliteRow> rows;
    while (statement.step()) rows.push_back(statement.row());
    return rows;
}

std::int64_t SqliteFile::number(const std::string& sql) {
    const auto rows = query(sql);
    if (rows.empty() || rows[0].empty()) throw std::runtime_error("no row: " + sql);
    const auto* value = std::get_if<std::int64_t>(&rows[0][0]);
    return value == nullptr ? 0 : *value;
}

void SqliteFile::close() {
    if (handle_ == nullptr) return;
    sqlite3_exec(handle_, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
    if (sqlite3_close(handle_) != SQLITE_OK) fail(handle_, "close");
    handle_ = nullptr;
}

}  // namespace salvor
