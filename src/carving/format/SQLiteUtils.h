#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "carving/format/varInt.h"
#include "util/Bytes.h"

namespace salvor {

/// Readers of the big-endian fields and variable-length integers of a SQLite file. A read that
/// does not lie wholly inside the data yields nothing; the caller decides what that ends.
class SQLiteUtils {
  public:
    /// Every varint is read through a window of this many bytes, which must lie inside the data
    /// even when the encoding is shorter: the end of most searched regions is reached by such a
    /// failing read. Kept: nine-byte-window.
    static constexpr std::size_t kVarintSpan = 9;

    static std::optional<std::uint16_t> convertToint16fromData(Bytes data, std::size_t location);
    /// The 32-bit big-endian value at `location`, kept as a signed number.
    static std::optional<std::int32_t> int32FromData(Bytes data, std::size_t location);

    /// The next-freeblock field of the freeblock at `offset`; at offset 1 of a b-tree page the
    /// first freeblock.
    static std::optional<std::uint16_t> NextFreeblockOffset(Bytes data, std::size_t offset);
    static std::optional<std::uint16_t> FreeblockSize(Bytes data, std::size_t offset);
    /// The freeblock at `offset`, its own 4-byte header included.
    static std::optional<Bytes> FreeblockData(Bytes data, std::size_t offset);

    /// Value and number of bytes taken.
    static std::optional<std::pair<std::int64_t, std::int32_t>> convertVarintToIntfromByteArray(
        Bytes data, std::size_t index = 0);
    static std::optional<varInt> convertRealVarintToIntfromByteArray(Bytes data, std::size_t index);
    /// Decodes the varint at `bytes`, of which `kVarintSpan` must be readable.
    static varInt decodeVarint(const std::uint8_t* bytes);

    static std::vector<std::uint8_t> reverseData(Bytes data);
    static bool IsOdd(std::int64_t number) { return (number & 1) != 0; }
    static bool IsEven(std::int64_t number) { return (number & 1) == 0; }
    /// Whether bit `bitToCheck` modulo 32 is set. The answer is cut to 8 bits. Kept:
    /// eight-bits-only.
    bool isBitSet(std::int32_t value, std::int32_t bitToCheck) const;
};

inline varInt SQLiteUtils::decodeVarint(const std::uint8_t* bytes) {
    std::uint64_t value = 0;
    for (std::int32_t i = 0; i < 8; ++i) {
        value = (value << 7) | (bytes[i] & 0x7Fu);
        if (bytes[i] < 0x80) return {static_cast<std::int64_t>(value), i + 1};
    }
    return {static_cast<std::int64_t>((value << 8) | bytes[8]), 9};
}

}  // namespace salvor
