#pragma once

#include <cstdint>

namespace salvor {

/// A decoded variable-length integer of the SQLite file format and the number of bytes, 1 to 9,
/// that its encoding took.
struct varInt {
    std::int64_t value = 0;
    std::int32_t position = 0;

    friend bool operator==(const varInt&, const varInt&) = default;
};

}  // namespace salvor
