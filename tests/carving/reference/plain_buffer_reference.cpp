#include <algorithm>

#include "plain_buffer.h"

namespace salvor::reference {
namespace {

/// The length of the character at `at`, 0 when it is none.
std::size_t utf8Length(const Buffer& text, std::size_t at) {
    const std::uint32_t lead = text[at];
    std::size_t length = 0;
    std::uint32_t point = 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC0 && lead < 0xE0) {
        length = 2;
        point = lead - 0xC0;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        length = 3;
        point = lead - 0xE0;
    } else if (lead >= 0xF0 && lead < 0xF8) {
        length = 4;
        point = lead - 0xF0;
    } else {
        return 0;
    }
    if (at + length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint32_t next = text[at + i];
        if (next < 0x80 || next >= 0xC0) return 0;
        point = point * 64 + (next - 0x80);
    }
    const std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
    return point < smallest[length] || surrogate || point > 0x10FFFF ? 0 : length;
}

}  // namespace

Buffer subrange(const Buffer& buffer, std::int64_t offset, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(buffer.size());
    if (offset < 0 || length < 0 || offset > size || length > size - offset) throw RangeFailure();
    return Buffer(buffer.begin() + offset, buffer.begin() + offset + length);
}

std::uint64_t bigEndian(const Buffer& buffer, std::int64_t offset, std::int64_t length) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : subrange(buffer, offset, length)) value = value * 256 + byte;
    return value;
}

VarInt readVarint(const Buffer& buffer, std::int64_t offset) {
    const auto size = static_cast<std::int64_t>(buffer.size());
    if (offset < 0 || offset > size - 9) throw RangeFailure();
    std::uint8_t bytes[9];
    std::copy_n(buffer.begin() + offset, 9, bytes);
    std::uint64_t value = 0;
    std::int64_t i = 0;
    for (;; ++i) {
        const std::uint8_t b = bytes[i];
        if (i == 8) {
            value = value * 256 + b;
            break;
        }
        value = value * 128 + b % 128;
        if (b <= 127) break;
    }
    return {static_cast<std::int64_t>(value), i + 1};
}

bool isUtf8(const Buffer& text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8Length(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

bool isAscii(const Buffer& text) {
    return std::all_of(text.begin(), text.end(), [](std::uint8_t byte) { return byte < 128; });
}

}  // namespace salvor::reference
