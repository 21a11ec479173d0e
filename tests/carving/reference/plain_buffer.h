#pragma once

#include <cstdint>
#include <vector>

namespace salvor::reference {

using Buffer = std::vector<std::uint8_t>;

/// Thrown by every read that is not wholly inside its buffer.
struct RangeFailure {};

struct VarInt {
    std::int64_t value = 0;
    std::int64_t length = 0;
};

/// `length` bytes from `offset`.
Buffer subrange(const Buffer& buffer, std::int64_t offset, std::int64_t length);
/// Big-endian, unsigned.
std::uint64_t bigEndian(const Buffer& buffer, std::int64_t offset, std::int64_t length);
/// Needs nine bytes, however short the encoding.
VarInt readVarint(const Buffer& buffer, std::int64_t offset);
bool isUtf8(const Buffer& text);
bool isAscii(const Buffer& text);

}  // namespace salvor::reference
