#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "carving/deep/PageView.h"
#include "util/Bytes.h"

namespace salvor::deep {

enum class RowState : std::uint8_t {
    Live,
    Deleted,
    Earlier,   ///< an earlier version of a row that lives, or of a deleted one that is listed
    Dropped,   ///< its table is gone
    Fragment,  ///< something of it can be read, but no whole row
};
const char* toString(RowState state);

/// What the structure of a row and its values leave open. How often each level is right is
/// measured in docs/recovery-quality.md.
enum class Confidence : std::uint8_t {
    Certain,   ///< nothing of it was guessed
    Likely,    ///< a lost part was worked out, and all else fits
    Possible,  ///< little speaks against other readings of the bytes
};
const char* toString(Confidence confidence);

/// Bytes of a blob, or of a text that does not decode.
struct RawBytes {
    std::vector<std::uint8_t> bytes;
    friend bool operator==(const RawBytes&, const RawBytes&) = default;
};
/// NULL, integer, real, text in UTF-8, bytes.
using RecoveredValue = std::variant<std::monostate, std::int64_t, double, std::string, RawBytes>;

struct RecoveredColumn {
    std::size_t column = 0;  ///< its place in the table's definition
    RecoveredValue value;
    std::uint64_t offset = 0;  ///< where the value's bytes stand in the first origin's file
    std::uint64_t length = 0;  ///< those of them that stand there, 0 for what takes none
};

/// A place where the row's bytes stand.
struct RowPlace {
    ImageFile file = ImageFile::Main;
    std::uint32_t page = 0;
    std::uint32_t frame = 0;   ///< of the log, from 1; 0 elsewhere
    std::uint64_t offset = 0;  ///< in the file
    std::uint64_t length = 0;  ///< what stands of the cell, overflow pages aside
    Space space = Space::Gap;
};

/// A row as it is handed on. `table` counts the tables of the report.
struct RecoveredRow {
    std::size_t table = 0;
    RowState state = RowState::Deleted;
    Confidence confidence = Confidence::Certain;
    std::optional<std::int64_t> rowId;
    std::vector<RecoveredColumn> columns;  ///< without those that are missing
    std::vector<std::size_t> missing;
    std::vector<std::string> reasons;
    std::vector<RowPlace> origins;  ///< the best one first
};

}  // namespace salvor::deep
