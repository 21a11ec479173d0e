#pragma once

#include <cstddef>
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
        : handle(std::move(connection)), statement(prepared), reading{handle->freshBudget()} {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() { close(); }

    void close() {
        if (handle != nullptr) handle->finalize(statement);
        statement = nullptr;
        onRow = false;
        handle.reset();
    }
    void rememberNames();
    /// Index of the last column with this name, -1 without one or without a current row.
    int column(const std::string& name) const;

    std::shared_ptr<FMDBUtils::Handle> handle;
    sqlite3_stmt* statement;
    Reading reading;
    std::vector<std::string> names;
    bool onRow = false;
    bool finished = false;
    bool failed = false;
};

}  // namespace salvor
