#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "records/ColumnValue.h"
#include "util/Text.h"

namespace salvor {

/// The rows of one query, stepped forward with `next`. Columns are named without regard to case;
/// of a doubled name the last column counts. Reading a column that the result lacks, or before
/// the first row, gives absent, 0 or false. A text that is not valid UTF-8 is absent.
/// Keeps its connection alive. Not thread-safe.
class ResultSet {
  public:
    struct Impl;
    ResultSet();  ///< no rows
    explicit ResultSet(std::unique_ptr<Impl> impl);
    ResultSet(ResultSet&&) noexcept;
    ResultSet& operator=(ResultSet&&) noexcept;
    ~ResultSet();

    bool next();
    /// Tells how much room the caller takes for each row besides its texts, which the budget of
    /// the connection bounds.
    void keepsOfEachRow(std::size_t bytes);
    /// How much room is left for what the caller makes of the values of this row.
    std::uint64_t room() const;
    /// Takes so much of it; more than there is ends the reading with the next step.
    void takeRoom(std::uint64_t bytes) const;
    void close();
    /// A step failed, or the statement was ended by its guards.
    bool hadError() const;

    Text stringForColumn(const std::string& name) const;
    std::int32_t intForColumn(const std::string& name) const;  ///< cut to 32 bits
    std::int64_t longForColumn(const std::string& name) const;
    std::int64_t longLongIntForColumn(const std::string& name) const;
    double doubleForColumn(const std::string& name) const;
    bool boolForColumn(const std::string& name) const;
    Text stringForColumnIndex(int index) const;
    /// Raw bytes of a blob or text column, as a string; absent for NULL.
    Text dataForColumn(const std::string& name) const;
    bool columnIsNull(const std::string& name) const;

  private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace salvor
