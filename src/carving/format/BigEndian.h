#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "util/Bytes.h"

namespace salvor {

/// The big-endian number of `Width` bytes, 2, 4 or 8, at `at`; 0 when it does not lie wholly
/// inside.
template <std::size_t Width>
std::uint64_t bigEndian(Bytes data, std::size_t at) {
    if (data.size() < Width || at > data.size() - Width) return 0;
    const std::uint8_t* const bytes = data.data() + at;
    // One load and one swap instead of a loop, which the compiler does not see through.
    if constexpr (std::endian::native == std::endian::little && Width == 8) {
        std::uint64_t value = 0;
        std::memcpy(&value, bytes, Width);
        return __builtin_bswap64(value);
    } else if constexpr (std::endian::native == std::endian::little && Width == 4) {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes, Width);
        return __builtin_bswap32(value);
    } else {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < Width; ++i) value = value << 8 | bytes[i];
        return value;
    }
}

inline std::uint32_t bigEndian16(Bytes data, std::size_t at) {
    return static_cast<std::uint32_t>(bigEndian<2>(data, at));
}

inline std::uint32_t bigEndian32(Bytes data, std::size_t at) {
    return static_cast<std::uint32_t>(bigEndian<4>(data, at));
}

}  // namespace salvor
