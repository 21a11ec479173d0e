#pragma once

#include <array>
#include <bitset>
#include <cstddef>

#include "carving/search/CompiledPattern.h"

namespace salvor {

/// With which bytes the serial types of a header's first checked columns can begin. Where a header
/// has fewer, every byte will do.
struct LeadingColumns {
    static constexpr std::size_t kColumns = 4;

    LeadingColumns() = default;
    explicit LeadingColumns(const CompiledPattern& pattern);

    std::array<std::bitset<256>, kColumns> mayBegin;

    /// The bytes of the column that lets the fewest through: every header has one of them.
    const std::bitset<256>& rarest() const;
};

}  // namespace salvor
