#include "sql/DatabaseHandle.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "sql/AccessTimes.h"
#include "sql/StatementGuards.h"

namespace salvor {
namespace {

bool isUnreserved(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/-._~").find(c) != std::string_view::npos;
}

/// A "file:" address of `path` that SQLite reads without locks, logs or side files. The empty
/// authority keeps a path that begins with two slashes a path.
std::string immutableAddress(const std::string& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string address = "file://";
    for (const char c : path) {
        if (isUnreserved(c)) {
            address += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        address += '%';
        address += digits[byte >> 4];
        address += digits[byte & 15];
    }
    return address + "?immutable=1";
}

/// How many bytes the texts and blobs of the current row have.
std::uint64_t valueBytes(sqlite3_stmt* row) {
    std::uint64_t bytes = 0;
    for (int column = sqlite3_data_count(row); column-- > 0;) {
        const int type = sqlite3_column_type(row, column);
        if (type == SQLITE_TEXT || type == SQLITE_BLOB)
            bytes += static_cast<std::uint64_t>(sqlite3_column_bytes(row, column));
    }
    return bytes;
}

}  // namespace

FMDBUtils::Handle::Handle(SourcePolicy policy, std::stop_token stop,
                          std::shared_ptr<DatabaseWatch> watch)
    : guarded_(policy == SourcePolicy::Protected),
      cancelled_(std::move(stop)),
      watch_(std::move(watch)) {
    keepAccessTimes();
}

FMDBUtils::Handle::~Handle() {
    sqlite3_close_v2(db);
}

bool FMDBUtils::Handle::open(const std::string& path) {
    if (path.find('\0') != std::string::npos) return false;
    if (guarded_) return openProtected(path);
    return sqlite3_open(path.c_str(), &db) == SQLITE_OK;
}

bool FMDBUtils::Handle::openProtected(const std::string& path) {
    std::error_code error;
    // Only a regular file is opened: a named pipe would wait for its writer.
    if (!std::filesystem::is_regular_file(path, error)) {
        tell(ReadingEnd::Kind::NotOpened, "there is no regular file");
        return false;
    }
    const auto fileSize = std::filesystem::file_size(path, error);
    const auto absolute = std::filesystem::absolute(path, error);
    if (error) return false;
    const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    if (sqlite3_open_v2(immutableAddress(absolute.string()).c_str(), &db, flags, nullptr) !=
        SQLITE_OK) {
        std::string reason = sqlite3_errmsg(db);
        if (const int cause = sqlite3_system_errno(db); cause != 0)
            reason += ": " + std::generic_category().message(cause);
        tell(ReadingEnd::Kind::NotOpened, std::move(reason));
        return false;
    }
    installGuards(fileSize);
    return true;
}

void FMDBUtils::Handle::installGuards(std::uint64_t fileSize) {
    installStatementGuards(db, fileSize);
    reading_ = ReadingBudget(fileSize);
    sqlite3_progress_handler(db, ReadingBudget::kOpcodesPerTick, onProgress, this);
}

int FMDBUtils::Handle::onProgress(void* self) {
    auto& handle = *static_cast<Handle*>(self);
    if (handle.cancelled_.stop_requested()) return 1;
    return handle.running_ != nullptr && !handle.reading_.tick(*handle.running_) ? 1 : 0;
}

template <class Call>
int FMDBUtils::Handle::within(StatementBudget& budget, Call&& call) {
    if (!guarded_) return call();
    if (cancelled_.stop_requested()) return SQLITE_INTERRUPT;
    if (!reading_.mayRun()) return SQLITE_INTERRUPT;
    const ReadingBudget::Running charged(reading_);
    running_ = &budget;
    const int result = call();
    running_ = nullptr;
    return result;
}

int FMDBUtils::Handle::step(sqlite3_stmt* statement, Reading& reading) {
    const int result = within(reading.budget, [&] {
        const int step = sqlite3_step(statement);
        if (!guarded_ || step != SQLITE_ROW) return step;
        return reading_.handOut(reading.rowBytes + valueBytes(statement)) ? step : SQLITE_INTERRUPT;
    });
    if (result == SQLITE_ROW)
        ++reading.rows;
    else if (result == SQLITE_DONE)
        tell(ReadingEnd::Kind::Whole, {}, reading.rows);
    else if (!tellFailure(result, reading.rows))
        tell(ReadingEnd::Kind::Broken, sqlite3_errmsg(db), reading.rows);
    return result;
}

void FMDBUtils::Handle::finalize(sqlite3_stmt* statement) {
    const ReadingBudget::Running charged(reading_);
    sqlite3_finalize(statement);
}

void FMDBUtils::Handle::tell(ReadingEnd::Kind kind, std::string reason, std::uint64_t rows) const {
    if (watch_ != nullptr) watch_->readingEnded({kind, std::move(reason), rows});
}

/// Whether nothing is left to tell: it was a cancel, a budget, or what SQLite says of the file.
bool FMDBUtils::Handle::tellFailure(int result, std::uint64_t rows) {
    if (cancelled_.stop_requested()) return true;
    if (const char* const spent = reading_.spent(); spent != nullptr) {
        tell(ReadingEnd::Kind::Budget, spent, rows);
        return true;
    }
    // Such an error lies in the statement, as far as a statement that has yet to run can tell.
    const int kind = result & 0xFF;
    if (kind == SQLITE_OK || kind == SQLITE_ERROR || kind == SQLITE_AUTH) return false;
    tell(ReadingEnd::Kind::Broken, sqlite3_errmsg(db), rows);
    return true;
}

sqlite3_stmt* FMDBUtils::Handle::prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    auto budget = freshBudget();
    const int result =
        within(budget, [&] { return sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, &tail); });
    const bool single = result == SQLITE_OK && statement != nullptr && onlyBlanks(tail);
    // VACUUM asks no authoriser.
    notPrepared_.clear();
    if (single && (!guarded_ || sqlite3_stmt_readonly(statement) != 0)) return statement;
    if (!tellFailure(result, 0)) notPrepared_ = sqlite3_errmsg(db);
    finalize(statement);
    return nullptr;
}

bool FMDBUtils::Handle::onlyBlanks(const char* sql) {
    while (*sql != '\0') {
        sqlite3_stmt* statement = nullptr;
        const char* tail = nullptr;
        const int result = sqlite3_prepare_v2(db, sql, -1, &statement, &tail);
        if (result != SQLITE_OK || statement != nullptr) {
            sqlite3_finalize(statement);
            return false;
        }
        if (tail == sql) break;
        sql = tail;
    }
    return true;
}

}  // namespace salvor
