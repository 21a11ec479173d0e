#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "carving/signatures/SqLiteTableSignatures.h"
#include "records/ColumnValue.h"
#include "records/RecordOrigin.h"

namespace salvor {

/// What to carve: one table's patterns, perhaps narrowed to a version.
struct TableCarveOptions {
    std::string domain;
    std::string database;
    std::string table;
    std::optional<std::string> version;
    bool fullSearch = false;  ///< search every page whole
    bool callList = false;    ///< read freeblocks unshifted, as for the call list
};

/// A carved row: its mapped columns in the order they were read, a later value of the same name
/// replacing an earlier one in place.
struct CarvedRow {
    std::int64_t rowId = 0;
    std::vector<std::pair<std::string, OptionalColumnValue>> columns;
    RecordOrigin origin;
};

/// Runs the engine alone over one SQLite file and hands on its records, after the row-id
/// de-duplication, in the order in which they are found. A table without a signature yields none.
void carveTable(const SqLiteTableSignatures& signatures, const TableCarveOptions& options,
                const std::filesystem::path& file, std::stop_token cancelled,
                const std::function<void(const CarvedRow&)>& found);

}  // namespace salvor
