#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "carving/format/BigEndian.h"
#include "util/Bytes.h"

namespace salvor {

/// What a serial type of a record header says: 0 to 9 as they are numbered, texts and blobs of any
/// length as one class each, and the two numbers that no file has.
enum SerialClass : std::uint8_t {
    kNull = 0,
    kInt8 = 1,
    kInt64 = 6,
    kFloat = 7,
    kZero = 8,
    kOne = 9,
    kText = 10,
    kBlob = 11,
    kReserved = 12,
};
inline constexpr std::size_t kSerialClasses = 12;

inline SerialClass serialClass(std::uint64_t type) {
    if (type < 10) return static_cast<SerialClass>(type);
    if (type < 12) return kReserved;
    return type % 2 == 1 ? kText : kBlob;
}

/// Bytes of the value of this type.
inline std::uint64_t serialLength(std::uint64_t type) {
    constexpr std::array<std::uint8_t, 12> kLengths{0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
    return type < kLengths.size() ? kLengths[type] : (type - 12) / 2;
}

inline bool isInteger(SerialClass kind) {
    return (kind >= kInt8 && kind <= kInt64) || kind == kZero || kind == kOne;
}

/// The integer of this type that stands at the beginning of `value`; absent when it is cut.
inline std::optional<std::int64_t> serialInteger(std::uint64_t type, Bytes value) {
    if (type == kZero || type == kOne) return type == kOne ? 1 : 0;
    const auto length = static_cast<std::size_t>(serialLength(type));
    if (type > kInt64 || length == 0 || value.size() < length) return std::nullopt;
    std::uint64_t bits = (value[0] & 0x80u) != 0 ? ~std::uint64_t{0} : 0;
    for (std::size_t i = 0; i < length; ++i) bits = bits << 8 | value[i];
    return static_cast<std::int64_t>(bits);
}

/// The type in which SQLite stores an integer; below schema format 4 also 0 and 1 take a byte.
inline std::uint64_t integerType(std::int64_t value, bool zeroAndOne = true) {
    if (zeroAndOne && (value == 0 || value == 1)) return value == 0 ? kZero : kOne;
    const std::uint64_t size =
        value < 0 ? ~static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    constexpr std::array<std::uint8_t, 5> kBits{7, 15, 23, 31, 47};
    for (std::size_t i = 0; i < kBits.size(); ++i)
        if (size >> kBits[i] == 0) return i + 1;
    return kInt64;
}

}  // namespace salvor
