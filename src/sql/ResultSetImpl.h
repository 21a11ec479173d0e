#pragma once

#include <memory>
#include <sqlite3.h>
#include <string>
#include <vector>

#include "sql/DatabaseHandle.h"
#include "sql/ResultSet.h"

namespace salvor {

/// The prepared statement behind a result set. Internal to this box.
struct ResultSet::Impl {
    Impl(std::shared_ptr<FMDBUtils::Handle> connection, sqlite3_stmt* prepared)
        : handle(std::move(connection)), statement(prepared), budget(handle->freshBudget()) {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() { close(); }

    void close() {
        sqlite3_finalize(statement);
        statement = nullptr;
        onRow = false;
        handle.reset();
    }
    void rememberNames();
    /// Index of the last column with this name, -1 without one or without a current row.
    int column(const std::string& name) const;

    std::shared_ptr<FMDBUtils::Handle> handle;
    sqlite3_stmt* statement;
    StatementBudget budget;
    std::uint64_t rows = 0;  ///< handed out
    std::vector<std::string> names;
    bool onRow = false;
    bool finished = false;
    bool failed = false;
};

}  // namespace salvor
