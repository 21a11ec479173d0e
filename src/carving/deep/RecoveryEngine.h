#pragma once

#include <functional>
#include <stop_token>
#include <string>
#include <vector>

#include "carving/deep/Facts.h"
#include "carving/deep/RecoveredRow.h"
#include "carving/format/PageStore.h"

namespace salvor::deep {

struct RecoveryOptions {
    std::vector<std::string> tables;  ///< to be listed; all but SQLite's own when empty
    bool live = false;                ///< list the live rows as well
    bool fragments = false;           ///< and what is left of rows that cannot be rebuilt
};

/// Takes one row; false ends the listing. Without one rows are counted and not listed.
using RowSink = std::function<bool(const Facts&, const RecoveredRow&)>;

/// Finds the deleted rows of a SQLite database in its unallocated bytes, its log and its journal,
/// led by the schema and by what the live rows look like. Rows come in order of table, row id and
/// offset; live ones first within their table. Ends early, with what it has, when `stop` asks.
/// Whatever bytes the files hold it neither fails nor takes memory beyond 64 MB and 64 bytes a
/// found row, besides the mapped files and the longest text.
Facts recoverRows(const PageStore& store, const RecoveryOptions& options, const RowSink& sink,
                  std::stop_token stop = {});

}  // namespace salvor::deep
