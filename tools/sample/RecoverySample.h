#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/sample/SqliteFile.h"

namespace salvor {

/// What is left of a deleted row's cell, told from its bytes alone.
enum class CellRemains : std::uint8_t {
    Whole,
    Headless,  ///< all but its first four bytes, which a freeblock's header covers
    Spilled,   ///< it had overflow pages: not told
    Gone,
};

/// A row that was deleted from a sample, or one that lives in it.
struct SampleRow {
    std::int64_t rowId = 0;
    SqliteRow values;
    CellRemains remains = CellRemains::Gone;
};

/// A database with one table `t` of a random schema whose rows were inserted, deleted and inserted
/// again: page size, encoding, vacuum, journal or log, width and kinds of columns, way of deleting
/// and a column added later all follow from the seed. The table is `t` and has its row id in column
/// 0 when `alias` is set. A log or a journal lies beside the file.
class RecoverySample {
  public:
    RecoverySample(std::filesystem::path path, std::uint64_t seed);

    const std::string& description() const { return description_; }
    bool alias() const { return alias_; }
    const std::vector<SampleRow>& deleted() const { return deleted_; }
    const std::vector<SampleRow>& live() const { return live_; }

  private:
    enum class Kind : std::uint8_t { Guid, Words, Phone, Word, Date, Number, Small, Real, Blob };
    enum class Journal : std::uint8_t { Delete, Persist, Log };

    void chooseLayout(std::uint64_t seed);
    void createTable(SqliteFile& database);
    SqliteValue value(Kind kind, std::int64_t number);
    void insert(SqliteFile& database, std::int64_t count);
    void remove(SqliteFile& database);
    std::string cellOf(const SampleRow& row) const;
    void tellRemains();

    std::filesystem::path path_;
    std::uint64_t state_;
    std::uint64_t next();
    std::uint64_t below(std::uint64_t bound) { return bound == 0 ? 0 : next() % bound; }

    std::uint32_t pageSize_ = 4096;
    std::uint32_t encoding_ = 0;
    Journal journal_ = Journal::Delete;
    bool alias_ = false;
    std::vector<Kind> kinds_;
    std::int64_t inserted_ = 0;
    std::string description_;
    std::vector<SampleRow> live_;
    std::vector<SampleRow> deleted_;
};

}  // namespace salvor
