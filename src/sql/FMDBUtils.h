#pragma once

#include <initializer_list>
#include <memory>
#include <stop_token>
#include <string>

#include "records/ColumnValue.h"
#include "sql/DatabaseWatch.h"
#include "sql/ResultSet.h"
#include "sql/SourcePolicy.h"

struct sqlite3;

namespace salvor {

/// One connection to a category database. Opens nothing until `openDatabase`; a second call opens
/// a further handle and replaces the first. A statement that fails to prepare yields no rows.
/// Under `SourcePolicy::Protected` the connection is read-only and immutable and every statement
/// is guarded: reading only, one statement per text, ended on cancel and after a step budget.
/// A watch learns how each statement ends. Not thread-safe.
class FMDBUtils {
  public:
    explicit FMDBUtils(std::string path, SourcePolicy policy = SourcePolicy::Ordinary,
                       std::stop_token cancelled = {},
                       std::shared_ptr<DatabaseWatch> watch = nullptr);
    FMDBUtils(const FMDBUtils&) = delete;
    FMDBUtils& operator=(const FMDBUtils&) = delete;
    ~FMDBUtils();

    const std::string& dbPath() const { return path_; }
    /// Whether the file opened. Under the protected policy a missing file does not open.
    bool openDatabase();
    /// The open handle, or null.
    sqlite3* sharedDB() const;

    /// Runs one statement with its `?` parameters bound in order.
    ResultSet executeQuery(const std::string& sql,
                           std::initializer_list<ColumnValue> parameters = {});
    /// Runs the first of `statements` that prepares. The watch is told when none does, with the
    /// reason of the first: what they read is wanted whole.
    ResultSet executeList(std::initializer_list<const char*> statements);
    /// `executeQuery` with one parameter bound by its name; the others stay NULL, and a text
    /// without such a parameter runs as it is.
    ResultSet executeNamedQuery(const std::string& sql, const char* name, const ColumnValue& value);
    /// The last statement did not prepare.
    bool hadError() const { return hadError_; }

  private:
    struct Handle;
    friend struct ResultSet::Impl;
    std::string path_;
    SourcePolicy policy_;
    std::stop_token cancelled_;
    std::shared_ptr<DatabaseWatch> watch_;
    std::shared_ptr<Handle> handle_;
    bool hadError_ = false;
};

}  // namespace salvor
