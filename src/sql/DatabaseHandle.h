#pragma once

#include <cstddef>
#include <cstdint>
#include <sqlite3.h>
#include <stop_token>
#include <string>

#include "sql/DatabaseWatch.h"
#include "sql/FMDBUtils.h"
#include "sql/ReadingBudget.h"

namespace salvor {

/// How far a statement has come and what it may still spend.
struct Reading {
    StatementBudget budget;
    std::uint64_t rows = 0;     ///< handed out
    std::size_t rowBytes = 64;  ///< what the caller keeps of a row besides its values
};

/// One open SQLite connection, shared by its `FMDBUtils` and the result sets that still read from
/// it, and closed with the last of them. A guarded handle never writes, never leaves the file it
/// was opened on and ends a statement on cancel or when a budget is spent. Internal to this box.
struct FMDBUtils::Handle {
    Handle(SourcePolicy policy, std::stop_token stop, std::shared_ptr<DatabaseWatch> watch);
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();

    bool open(const std::string& path);
    /// The one statement of `sql`, or null when it does not prepare or a second one follows it.
    /// The watch is told what that says of the file, but not a statement that does not fit it.
    sqlite3_stmt* prepare(const std::string& sql);
    /// Steps `statement`, charges what it takes and tells the watch of the last step. A row is
    /// charged with its values and what the caller keeps of it.
    int step(sqlite3_stmt* statement, Reading& reading);
    void finalize(sqlite3_stmt* statement);
    std::uint64_t room() const { return reading_.room(); }
    void takeRoom(std::uint64_t bytes) { reading_.handOut(bytes); }
    StatementBudget freshBudget() { return reading_.statement(); }

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
    ReadingBudget reading_;
    StatementBudget* running_ = nullptr;
};

}  // namespace salvor
