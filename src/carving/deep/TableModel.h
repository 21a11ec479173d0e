#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "carving/deep/ColumnModel.h"
#include "carving/deep/TableDefinition.h"
#include "carving/format/RecordHeader.h"

namespace salvor::deep {

/// A table with what its rows have shown of it.
class TableModel {
  public:
    /// Tables with fewer columns need more evidence of other kinds.
    static constexpr std::size_t kWide = 8;

    TableModel(TableDefinition definition, std::uint32_t root, const DatabaseLayout& layout);

    const TableDefinition& definition() const { return definition_; }
    /// The page its tree begins on; of a dropped table, on which it once began, or 0.
    std::uint32_t root() const { return root_; }
    bool isWide() const { return columns_.size() >= kWide; }
    bool isLearned() const { return learned_ >= ColumnModel::kEnough; }
    const std::vector<ColumnModel>& columns() const { return columns_; }

    void learn(const Record& record, std::int64_t rowId);
    void finishLearning();
    /// A header of an earlier definition has so many columns.
    void addColumnCount(std::size_t count);

    /// Whether a row with so many types in its header can be the table's at all.
    bool admitsCount(std::size_t count) const;
    /// Whether rows or definitions are known that have so many.
    bool knowsCount(std::size_t count) const;
    /// All such numbers, rising.
    const std::vector<std::size_t>& knownCounts() const { return knownCounts_; }
    /// Whether a column may have a value of this class.
    bool admits(std::size_t column, SerialClass kind) const {
        return (unsigned{columns_[column].admissible()} >> kind & 1u) != 0;
    }
    /// Columns whose equal values make two rows versions of one: declared keys, or without any
    /// columns that identify a row by experience.
    const std::vector<std::vector<std::size_t>>& identities() const { return identities_; }
    /// How many of them are declared.
    std::size_t declaredIdentities() const { return definition_.uniqueKeys.size(); }
    /// A column that tells the row id, and what to add to it.
    std::optional<std::size_t> twin() const { return twin_; }

    bool dropped = false;    ///< no tree is left of it
    std::uint64_t rows = 0;  ///< live ones
    std::int64_t largestRowId = 0;
    std::int64_t handedOut = 0;     ///< the largest row id ever, where AUTOINCREMENT keeps it
    std::int64_t largestFound = 0;  ///< of deleted rows beyond doubt
    /// The largest row id known of; 0 when nothing is known.
    std::int64_t knownRowId() const { return std::max({largestRowId, handedOut, largestFound}); }

  private:
    TableDefinition definition_;
    std::uint32_t root_;
    std::vector<ColumnModel> columns_;
    std::vector<bool> counts_;  ///< by number of columns
    std::vector<std::size_t> knownCounts_;
    std::uint64_t learned_ = 0;
    std::vector<std::vector<std::size_t>> identities_;
    std::optional<std::size_t> twin_;
};

/// Equal for rows of equal values, row id aside: columns that an older row lacks count as NULL.
std::uint64_t contentHash(const Record& record);
/// Equal for rows of equal values in these columns; absent when one is missing or NULL.
std::optional<std::uint64_t> keyHash(const Record& record, const std::vector<std::size_t>& columns);

}  // namespace salvor::deep
