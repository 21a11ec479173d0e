#include "sql/DatabaseHandle.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "sql/AccessTimes.h"
#include "sql/StatementGuards.h"

namespace salvor {
namespace {

constexpr int kOpcodesPerTick = 1000;
// About two seconds of a hostile join. A whole-table read spends about one opcode per byte of
// file, so large files get their share on top.
constexpr std::uint64_t kBaseTicks = 100'000;
constexpr std::uint64_t kBytesPerTick = 250;
// After statements that ran out, the next ones get less: a file full of hostile texts must not
// cost the base budget for each of them.
constexpr std::uint64_t kLeastBaseTicks = 1'000;
constexpr std::chrono::seconds kBaseTime{30};
constexpr std::uint64_t kBytesPerSecond = 4 << 20;
constexpr sqlite3_int64 kMemoryLimit = sqlite3_int64{4} << 30;

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
    installStatementGuards(db);
    baseTicks_ = kBaseTicks;
    sizeTicks_ = fileSize / kBytesPerTick;
    time_ = kBaseTime + std::chrono::seconds(fileSize / kBytesPerSecond);
    sqlite3_progress_handler(db, kOpcodesPerTick, onProgress, this);
}

StatementBudget FMDBUtils::Handle::freshBudget() const {
    return {baseTicks_ + sizeTicks_, time_};
}

int FMDBUtils::Handle::onProgress(void* self) {
    auto& handle = *static_cast<Handle*>(self);
    if (handle.cancelled_.stop_requested()) return 1;
    StatementBudget* budget = handle.running_;
    if (budget == nullptr) return 0;
    if (budget->ticks > 0) --budget->ticks;
    if (budget->ticks == 0)
        handle.spentBudget_ = "the statement takes more steps than a file of this size allows";
    else if (std::chrono::steady_clock::now() - handle.started_ > budget->time)
        handle.spentBudget_ = "the statement takes more time than a file of this size allows";
    else if (sqlite3_memory_used() > kMemoryLimit)
        handle.spentBudget_ = "the statement takes more memory than is allowed";
    else
        return 0;
    handle.baseTicks_ = std::max(handle.baseTicks_ / 2, kLeastBaseTicks);
    return 1;
}

template <class Call>
int FMDBUtils::Handle::within(StatementBudget& budget, Call&& call) {
    if (!guarded_) return call();
    if (cancelled_.stop_requested()) return SQLITE_INTERRUPT;
    running_ = &budget;
    spentBudget_ = nullptr;
    started_ = std::chrono::steady_clock::now();
    const int result = call();
    running_ = nullptr;
    budget.time -= std::chrono::steady_clock::now() - started_;
    return result;
}

int FMDBUtils::Handle::step(sqlite3_stmt* statement, StatementBudget& budget, std::uint64_t rows) {
    const int result = within(budget, [statement] { return sqlite3_step(statement); });
    if (result == SQLITE_DONE)
        tell(ReadingEnd::Kind::Whole, {}, rows);
    else if (result != SQLITE_ROW && !tellFailure(result, rows))
        tell(ReadingEnd::Kind::Broken, sqlite3_errmsg(db), rows);
    return result;
}

void FMDBUtils::Handle::tell(ReadingEnd::Kind kind, std::string reason, std::uint64_t rows) const {
    if (watch_ != nullptr) watch_->readingEnded({kind, std::move(reason), rows});
}

/// Whether nothing is left to tell: it was a cancel, a budget, or what SQLite says of the file.
bool FMDBUtils::Handle::tellFailure(int result, std::uint64_t rows) {
    if (cancelled_.stop_requested()) return true;
    if (spentBudget_ != nullptr) {
        tell(ReadingEnd::Kind::Budget, spentBudget_, rows);
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
    sqlite3_finalize(statement);
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
