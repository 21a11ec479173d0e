#pragma once

#include <chrono>
#include <cstdint>
#include <sqlite3.h>
#include <stop_token>
#include <string>

#include "sql/DatabaseWatch.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// What one statement may still spend, counted over all its steps.
struct StatementBudget {
    std::uint64_t ticks = 0;  ///< calls of the progress handler
    std::chrono::steady_clock::duration time{};
};

/// One open SQLite connection, shared by its `FMDBUtils` and the result sets that still read from
/// it, and closed with the last of them. A guarded handle never writes, never leaves the file it
/// was opened on and ends a statement on cancel or when its budget is spent. Internal to this box.
struct FMDBUtils::Handle {
    Handle(SourcePolicy policy, std::stop_token stop, std::shared_ptr<DatabaseWatch> watch);
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();

    bool open(const std::string& path);
    /// The one statement of `sql`, or null when it does not prepare or a second one follows it.
    /// The watch is told what that says of the file, but not a statement that does not fit it.
    sqlite3_stmt* prepare(const std::string& sql);
    /// Steps `statement`, which has handed out `rows`, charges `budget` and tells the watch of the
    /// last step.
    int step(sqlite3_stmt* statement, StatementBudget& budget, std::uint64_t rows);
    StatementBudget freshBudget() const;

    void tell(ReadingEnd::Kind kind, std::string reason, std::uint64_t rows = 0) const;
    /// Why the last call failed; "" when `prepare` has told the watch already.
    const std::string& notPrepared() const { return notPrepared_; }

    sqlite3* db = nullptr;

  private:
    bool openProtected(const std::string& path);
    void installGuards(std::uint64_t fileSize);
    bool tellFailure(int result, std::uint64_t rows);
    bool onlyBlanks(const char* sql);
    template <class Call>
    int within(StatementBudget& budget, Call&& call);
    static int onProgress(void* self);

    bool guarded_;
    std::stop_token cancelled_;
    std::shared_ptr<DatabaseWatch> watch_;
    std::string notPrepared_;
    const char* spentBudget_ = nullptr;  ///< of the statement that ran last
    StatementBudget* running_ = nullptr;
    std::chrono::steady_clock::time_point started_{};
    std::uint64_t baseTicks_ = 0;
    std::uint64_t sizeTicks_ = 0;
    std::chrono::seconds time_{0};
};

}  // namespace salvor
