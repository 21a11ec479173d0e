#pragma once

#include <cstdint>
#include <vector>

#include "util/Bytes.h"

namespace salvor {

/// A record split into its serial types and its values, which stand one behind the other from
/// `body` on. Reused from row to row, so that reading one allocates nothing.
struct Record {
    std::vector<std::uint64_t> types;
    Bytes payload;
    std::size_t body = 0;

    /// False when the header does not end where it says, or the values pass the payload's end.
    bool read(Bytes whole);
    /// Calls `show(column, type, value)` for each column; a value that passes the end is shorter.
    template <class Show>
    void eachValue(Show&& show) const;
};

/// Appends the types that stand between `at` and `end`; false when they do not end there or are
/// reserved.
bool readTypes(Bytes data, std::size_t at, std::size_t end, std::vector<std::uint64_t>& types);

/// Bytes that values of these types take.
std::uint64_t bodyLength(const std::vector<std::uint64_t>& types);

}  // namespace salvor

#include "carving/format/SerialType.h"

template <class Show>
void salvor::Record::eachValue(Show&& show) const {
    std::size_t at = body;
    for (std::size_t i = 0; i < types.size(); ++i) {
        const std::uint64_t length = serialLength(types[i]);
        const Bytes value = slice(payload, at, static_cast<std::size_t>(length));
        show(i, types[i], value);
        at += value.size();
    }
}
