#include "carving/search/LeadingColumns.h"

#include <algorithm>

namespace salvor {

LeadingColumns::LeadingColumns(const CompiledPattern& pattern) {
    for (std::size_t k = 0; k < kColumns; ++k) {
        const std::size_t column = pattern.firstChecked + k;
        for (unsigned byte = 0; byte < mayBegin[k].size(); ++byte) {
            mayBegin[k][byte] =
                column >= pattern.columns.size() || pattern.columns[column].mayBeginWith(byte);
        }
    }
}

const std::bitset<256>& LeadingColumns::rarest() const {
    // No byte is as frequent in a database as 0.
    const auto weight = [](const auto& set) { return set.count() + (set[0] ? 64U : 0U); };
    return *std::min_element(mayBegin.begin(), mayBegin.end(),
                             [&](const auto& a, const auto& b) { return weight(a) < weight(b); });
}

}  // namespace salvor
