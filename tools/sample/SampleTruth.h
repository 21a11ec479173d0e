#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/sample/SqliteFile.h"

namespace salvor {

/// One row that a sample database holds or held. `date` is the number as stored.
struct TruthRow {
    std::string database;  ///< stored name in the backup
    std::string table;
    std::int64_t rowId = 0;  ///< 0 for what lies in no database
    std::optional<std::string> guid;
    std::optional<std::string> text;
    std::int64_t date = 0;
    std::string handle;
    bool fromMe = false;
    std::string how;                            ///< how it was deleted; empty for a live row
    std::map<std::string, SqliteValue> values;  ///< what else a category tells
};

/// All that a sample backup knows about itself.
struct SampleTruth {
    int ios = 0;
    std::string version;
    std::string deviceName;
    std::string uniqueDeviceID;
    std::uint64_t seed = 0;
    SqliteLayout layout;
    std::vector<TruthRow> live;
    std::vector<TruthRow> deleted;

    /// The rows of `rows` that belong to `table`.
    static std::vector<TruthRow> of(const std::vector<TruthRow>& rows, std::string_view table);
    void writeJson(const std::filesystem::path& file) const;
};

}  // namespace salvor
