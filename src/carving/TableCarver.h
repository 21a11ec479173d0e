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

/// Runs the engine alone over one SQLite file and hands on its rows in the order in which they are
/// found. A table without a signature yields none. Origins name no database.
void carveTable(const SqLiteTableSignatures& signatures, const TableCarveOptions& options,
                const std::filesystem::path& file, std::stop_token cancelled,
                const std::function<void(const CarvedRow&)>& found);

}  // namespace salvor
