#pragma once

#include <cstddef>
#include <cstdint>

#include "util/Bytes.h"

namespace salvor {

/// The big-endian number of `Width` bytes at `at`; 0 when it does not lie wholly inside.
template <std::size_t Width>
std::uint64_t bigEndian(Bytes data, std::size_t at) {
    if (data.size() < Width || at > data.size() - Width) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < Width; ++i) value = value << 8 | data[at + i];
    return value;
}

inline std::uint32_t bigEndian16(Bytes data, std::size_t at) {
    return static_cast<std::uint32_t>(bigEndian<2>(data, at));
}

inline std::uint32_t bigEndian32(Bytes data, std::size_t at) {
    return static_cast<std::uint32_t>(bigEndian<4>(data, at));
}

}  // namespace salvor
