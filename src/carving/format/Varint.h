#pragma once

#include <cstddef>
#include <cstdint>

#include "util/Bytes.h"

namespace salvor {

/// A variable-length integer and the number of bytes it takes, 1 to 9; 0 when it is cut off.
struct Varint {
    std::uint64_t value = 0;
    std::uint32_t length = 0;
};

inline constexpr std::uint32_t kMaxVarint = 9;

/// The varint at `at`, which may end with the last byte of `data`.
inline Varint readVarint(Bytes data, std::size_t at) {
    if (at >= data.size()) return {};
    if (data[at] < 0x80) return {data[at], 1};
    const std::size_t room = data.size() - at;
    std::uint64_t value = 0;
    for (std::uint32_t i = 0; i < kMaxVarint && i < room; ++i) {
        const std::uint8_t byte = data[at + i];
        if (i == kMaxVarint - 1) return {value << 8 | byte, kMaxVarint};
        value = value << 7 | (byte & 0x7Fu);
        if (byte < 0x80) return {value, i + 1};
    }
    return {};
}

/// How many bytes `value` takes as SQLite writes it.
inline std::uint32_t varintLength(std::uint64_t value) {
    std::uint32_t length = 1;
    while (length < kMaxVarint && (value >>= 7) != 0) ++length;
    return length;
}

}  // namespace salvor
