#pragma once

#include <array>
#include <cstdint>

namespace salvor {

/// One entry of a pointer-map page: its number from 1 and its 5 bytes, a type from 1 to 5 and the
/// big-endian number of the parent page.
struct PointerMap {
    std::int32_t number = 0;
    std::array<std::uint8_t, 5> data{};
};

}  // namespace salvor
