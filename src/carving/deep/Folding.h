#pragma once

#include <cstdint>
#include <stop_token>
#include <unordered_map>
#include <utility>
#include <vector>

#include "carving/deep/FoundRows.h"
#include "carving/format/Payload.h"

namespace salvor::deep {

/// Compares the found rows of each table with its live ones, and with one another: copies of live
/// rows and earlier versions are told from deleted rows, copies of one row are put together.
/// Takes memory for the found rows alone: the live ones pass by.
class Folding {
  public:
    Folding(FoundRows& found, std::stop_token stop) : found_(found), stop_(std::move(stop)) {}

    /// Sets the fate of every row of table `table`, whose places in the list are `rows`.
    void fold(std::uint16_t table, std::vector<std::uint32_t> rows);

  private:
    struct Keyed {
        std::uint64_t key;
        std::uint32_t row;
        friend bool operator<(const Keyed& a, const Keyed& b) { return a.key < b.key; }
    };
    /// One value of a record, for comparing two of them.
    struct Value {
        std::uint64_t type = 0;
        std::vector<std::uint8_t> bytes;
        bool whole = false;
    };

    FoundRow& row(std::uint32_t place) { return found_.rows()[place]; }
    void collectKeys();
    /// A row whose first column may be one of several has as many hashes.
    void addOpenHashes(std::uint32_t place);
    void settleOpenRows();
    void passLiveRows();
    void meetLiveRow(const Record& record, std::int64_t rowId, std::uint32_t page,
                     const Cell& cell);
    void judgeByLiveRows();
    bool liveRecord(std::uint32_t page, const Cell& cell, Record& record);
    void foldEqual();
    void foldVersions();
    void foldGroup(std::vector<std::uint32_t>& group);
    bool alike(const FoundRow& one, const std::vector<Value>& other);
    std::vector<Value> valuesOf(const Record& record) const;

    FoundRows& found_;
    std::stop_token stop_;
    std::uint16_t table_ = 0;
    const TableModel* model_ = nullptr;
    std::vector<std::uint32_t> rows_;
    std::vector<Keyed> byHash_;
    std::vector<Keyed> byDeclared_;  ///< of declared keys
    std::vector<Keyed> byKey_;       ///< of identities by experience
    std::vector<Keyed> byText_;      ///< of one text of each fragment
    std::vector<std::vector<std::size_t>> textColumns_;
    std::vector<bool> filter_;  ///< of the keys, by their lower bits
    struct LivePlace {
        std::uint32_t page;
        Cell cell;
        bool declared;  ///< by a declared key
    };
    std::unordered_map<std::uint32_t, LivePlace> live_;  ///< the live row that a found one is of
    Payload payload_;
};

}  // namespace salvor::deep
