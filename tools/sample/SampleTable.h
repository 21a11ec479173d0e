#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/sample/SampleFolder.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {

/// A column of a sample table and what its rows hold where they do not say otherwise.
struct SampleColumn {
    std::string name;
    std::string type;
    SqliteValue value = {};
};

/// The columns of a sample table in the order in which a generation stores them.
class SampleColumns {
  public:
    explicit SampleColumns(std::vector<SampleColumn> columns) : columns_(std::move(columns)) {}

    void create(SqliteFile& database, const std::string& table) const;
    /// A value for every column: those named in `values`, the usual ones for all others. Throws
    /// std::runtime_error for a name that the table lacks.
    SqliteRow row(const std::map<std::string, SqliteValue>& values) const;
    bool has(const std::string& name) const;
    void insert(std::size_t at, const std::vector<SampleColumn>& more);

  private:
    std::vector<SampleColumn> columns_;
};

/// One row of a category's table and what the truth tells of it.
struct SampleRecord {
    SqliteRow row;  ///< a value for every column, the row id's first
    TruthRow truth;
};

/// A table of a sample database that is filled, loses rows in the ways in which devices lose them,
/// and is filled on: every seventh row alone, a run of a third of the rows, and some of the space
/// is taken again by newer rows. Rows and deletions go into the sample's truth.
class SampleTable {
  public:
    /// `record` makes the row with a number from 1 on, which is its row id too.
    using MakeRecord = std::function<SampleRecord(std::int64_t number)>;

    SampleTable(SampleFolder& folder, SqliteFile& database, std::string table, std::string key);

    void fill(std::int64_t rows, const MakeRecord& record);
    /// Takes the rows away; `alsoDelete` is told the row id of each.
    void deleteSome(const std::function<void(std::int64_t rowId)>& alsoDelete = {});
    /// Adds rows once more and leaves the truth to the folder.
    void finish(std::int64_t newRows, const MakeRecord& record);

  private:
    void remove(SampleRecord& record, const char* how);

    SampleFolder& folder_;
    SqliteFile& database_;
    std::string table_;
    std::string key_;
    std::vector<SampleRecord> records_;
};

/// Some words that no two numbers share, as in names, titles and messages.
std::string sampleWords(std::int64_t number, std::size_t words);

/// The layout of a category's database on this sample.
SqliteLayout sampleLayout(const SampleFolder& folder, AutoVacuum autoVacuum = AutoVacuum::None);

}  // namespace salvor
