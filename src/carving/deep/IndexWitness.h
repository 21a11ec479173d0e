#pragma once

#include <cstdint>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

#include "carving/deep/FoundRows.h"

namespace salvor::deep {

/// Finds the row ids of rows that lost them, in freed entries of their table's indexes: an entry
/// holds the values of the indexed columns and then the row id. An id is taken when all entries
/// of a row agree, unique indexes before others.
class IndexWitness {
  public:
    IndexWitness(FoundRows& found, std::stop_token stop) : found_(found), stop_(std::move(stop)) {}

    void tellRowIds();

  private:
    /// What of an entry is known before its row id is.
    struct Key {
        std::uint32_t row = 0;
        bool unique = false;
        std::string types;
        std::string body;
    };
    struct Answer {
        std::int64_t id = 0;  ///< 0 for none
        bool disputed = false;
        void add(std::int64_t value) {
            disputed |= id != 0 && id != value;
            id = value;
        }
    };

    bool collectKeys();
    void addKey(const Record& record, const IndexModel& index, std::uint32_t row);
    void searchPage(const PageView& view);
    void searchRange(const PageView& view, const ByteRange& range);
    void match(const PageView& view, const ByteRange& range, std::uint32_t at, const Key& key);
    void matchHeadless(const PageView& view, const ByteRange& range, std::uint32_t at,
                       const Key& key);
    void answer(const Key& key, std::int64_t id);
    void settle();

    FoundRows& found_;
    std::stop_token stop_;
    std::vector<Key> keys_;
    std::unordered_multimap<std::uint32_t, std::uint32_t> byStart_;  ///< four bytes to keys
    std::vector<bool> starts_;  ///< of those four bytes, by a hash
    std::unordered_map<std::uint32_t, Answer> unique_;
    std::unordered_map<std::uint32_t, Answer> others_;
};

}  // namespace salvor::deep
