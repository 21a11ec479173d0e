#pragma once

#include <bitset>
#include <cstdint>
#include <vector>

#include "carving/deep/TableModel.h"

namespace salvor::deep {

/// What the headers of all tables looked for begin with, made ready for a look at each byte.
class SearchPlan {
  public:
    explicit SearchPlan(const std::vector<TableModel>& tables);

    /// Whether a record header of one length byte can begin with these three bytes.
    bool mayBegin(std::uint8_t length, std::uint8_t first, std::uint8_t second) const {
        return firsts_[std::size_t{length} << 8 | first] &&
               (first >= 0x80 || seconds_[std::size_t{length} << 8 | second]);
    }
    /// The same for a header of two length bytes.
    bool mayBeLong(std::uint32_t length) const {
        return length < longHeaders_.size() && longHeaders_[length];
    }
    /// Tables that a row of so many types can belong to.
    const std::vector<std::uint16_t>& tablesOf(std::size_t count) const {
        return count < byCount_.size() ? byCount_[count] : none_;
    }
    std::size_t maxColumns() const { return byCount_.empty() ? 0 : byCount_.size() - 1; }

  private:
    void add(const TableModel& table, std::size_t count);

    static constexpr std::size_t kPairs = std::size_t{128} << 8;

    std::bitset<kPairs> firsts_;
    std::bitset<kPairs> seconds_;
    std::vector<bool> longHeaders_;
    std::vector<std::vector<std::uint16_t>> byCount_;
    std::vector<std::uint16_t> none_;
};

}  // namespace salvor::deep
