#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "carving/signatures/TablePattern.h"

namespace salvor {

/// The serial types that one column of a pattern accepts, ready for quick answers.
class ColumnCodes {
  public:
    static constexpr std::int64_t kSmall = 128;  ///< a varint of one byte is smaller

    ColumnCodes() = default;
    explicit ColumnCodes(const std::vector<std::int32_t>& codes);

    bool accepts(std::int64_t serialType) const {
        if (serialType >= 0 && serialType < kSmall)
            return acceptsByte(static_cast<unsigned>(serialType));
        return acceptsLarge(serialType);
    }
    /// The answer for a serial type below 128, that is for a varint of one byte.
    bool acceptsByte(unsigned serialType) const {
        return (small_[serialType >> 6] >> (serialType & 63u) & 1u) != 0;
    }
    /// Whether every serial type of 128 and more is accepted.
    bool acceptsEveryLarge() const { return above_ < kSmall; }

    /// Whether a varint that begins with this byte can be an accepted serial type.
    bool mayBeginWith(unsigned byte) const;

  private:
    bool acceptsLarge(std::int64_t serialType) const;

    std::array<std::uint64_t, 2> small_{};
    std::int64_t above_ = INT64_MAX;   ///< accepts every serial type above this one
    std::vector<std::int32_t> exact_;  ///< accepted serial types of 128 and more
};

/// A header pattern decoded for matching.
struct CompiledPattern {
    explicit CompiledPattern(std::shared_ptr<const TablePattern> pattern);

    std::shared_ptr<const TablePattern> source;
    std::vector<ColumnCodes> columns;
    bool beginsWithRowId = false;
    std::size_t firstChecked = 1;  ///< first column whose serial type is looked at
};

}  // namespace salvor
