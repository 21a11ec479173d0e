#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "carving/RowCollector.h"
#include "carving/signatures/SqLiteTableSignatures.h"

namespace salvor {

/// What to carve: one table's patterns, perhaps narrowed to a version.
struct TableCarveOptions {
    std::string domain;
    std::string database;
    std::string table;
    std::optional<std::string> version;
    bool fullSearch = false;  ///< search every page whole
    bool callList = false;    ///< read freeblocks unshifted, as for the call list
    RowCollector::RowIds rowIds = RowCollector::RowIds::FirstOnly;
};

/// Spells domain, database, table and version of `options` as the signatures do, whose letters'
/// case need not be met. Returns "", or which name there is none of and which there are.
std::string spellAsSignatures(const SqLiteTableSignatures& signatures, TableCarveOptions& options);

/// What became of a file that was to be carved.
struct TableCarving {
    std::string fault;       ///< why nothing was searched, or ""
    bool isDatabase = true;  ///< it begins like a SQLite database; its bytes are searched anyway
};

/// Runs the engine alone over one SQLite file and hands on its rows in the order in which they are
/// found. A table without a signature yields none. Origins name no database.
TableCarving carveTable(const SqLiteTableSignatures& signatures, const TableCarveOptions& options,
                        const std::filesystem::path& file, std::stop_token cancelled,
                        const std::function<void(const CarvedRow&)>& found);

}  // namespace salvor
