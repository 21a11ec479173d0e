#pragma once

#include <filesystem>
#include <map>

#include "carving/deep/Facts.h"
#include "carving/deep/RecoveredRow.h"
#include "sql/NewDatabase.h"

namespace salvor {

/// Writes recovered rows into a new database: the tables they come from, with the same columns,
/// none of them constrained, and `_rowid`, `_state`, `_confidence` and `_origin` besides. Throws
/// std::runtime_error with file and cause; an existing file is refused.
class RecoveredDatabase {
  public:
    explicit RecoveredDatabase(const std::filesystem::path& path) : database_(path) {}

    void add(const deep::Facts& facts, const deep::RecoveredRow& row);
    void close() { database_.close(); }

  private:
    std::size_t tableOf(const deep::Facts& facts, std::size_t table);

    NewDatabase database_;
    std::map<std::size_t, std::size_t> tables_;
    std::map<std::string, int> names_;  ///< of tables, and how often each came
};

/// "main:123456", "wal:5000 frame 3": where a row was found, in short.
std::string originText(const deep::RowPlace& place);

}  // namespace salvor
