#include "carving/ColumnDecoder.h"

#include <algorithm>
#include <array>
#include <bit>

#include "util/Utf8.h"

namespace salvor {
namespace {

std::uint64_t bigEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

ColumnValue integer(std::int64_t number) {
    return number;
}

// Serial types 1 to 7 by number.
constexpr std::array<std::int64_t, 8> kWidths{0, 1, 2, 3, 4, 6, 8, 8};

ColumnValue fixedWidthValue(std::int64_t serialType, Bytes bytes) {
    const std::uint64_t raw = bigEndian(bytes);
    switch (serialType) {
        case 2:
            // Kept: two-bytes-swapped.
            return integer(
                static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[1] << 8 | bytes[0])));
        case 4:
            return integer(static_cast<std::int32_t>(static_cast<std::uint32_t>(raw)));
        case 7:
            return std::bit_cast<double>(raw);
        default:
            // Kept: odd-widths-unsigned.
            return integer(static_cast<std::int64_t>(raw));
    }
}

OptionalColumnValue asciiValue(Bytes bytes) {
    const bool ascii =
        std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte < 0x80; });
    if (!ascii) return std::nullopt;
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace

bool liesInside(Bytes data, std::int64_t begin, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(data.size());
    return begin >= 0 && begin <= size && length <= size - begin;
}

std::int64_t textLength(std::int64_t serialType) {
    return serialType >= 13 && serialType % 2 == 1 ? (serialType - 13) / 2 : -1;
}

DecodedColumn decodeColumn(Bytes data, std::int64_t begin, std::int64_t serialType) {
    if (serialType == 8 || serialType == 9) return {true, 0, integer(serialType - 8)};
    const bool blob = serialType >= 12;
    if (!blob && (serialType < 1 || serialType > 7)) return {};
    const std::int64_t width =
        blob ? (serialType - 12) / 2 : kWidths[static_cast<std::size_t>(serialType)];
    if (!liesInside(data, begin, width)) return {};
    const Bytes bytes =
        data.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(width));
    if (blob) return {true, width, asciiValue(bytes)};
    return {true, width, fixedWidthValue(serialType, bytes)};
}

OptionalColumnValue decodeText(Bytes bytes) {
    if (!isValidUtf8(bytes)) return std::nullopt;
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace salvor
