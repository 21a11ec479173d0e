#include "util/Utf8.h"

#include <cstdint>
#include <cstring>

namespace salvor {
namespace {

// What may follow a lead byte: how many continuation bytes, and the range of the first of them.
// The narrowed ranges exclude overlong forms, surrogates and what lies above U+10FFFF.
struct Lead {
    std::uint8_t following;
    std::uint8_t low;
    std::uint8_t high;
};

constexpr Lead leadOf(std::uint8_t byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    return {0, 0, 0};
}

constexpr bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

// Bytes of the run of plain ASCII at `at`, found eight at a time.
std::size_t asciiRun(Bytes data, std::size_t at) {
    const std::size_t begin = at;
    while (data.size() - at >= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, data.data() + at, sizeof word);
        if ((word & 0x8080808080808080U) != 0) break;
        at += sizeof word;
    }
    while (at < data.size() && data[at] < 0x80) ++at;
    return at - begin;
}

std::size_t utf16Units(char lead) {
    const auto byte = static_cast<std::uint8_t>(lead);
    if (isContinuation(byte)) return 0;
    return byte >= 0xF0 ? 2 : 1;
}

}  // namespace

bool isValidUtf8(Bytes data) {
    std::size_t at = 0;
    while ((at += asciiRun(data, at)) < data.size()) {
        const Lead lead = leadOf(data[at]);
        if (lead.following == 0 || data.size() - at <= lead.following) return false;
        if (data[at + 1] < lead.low || data[at + 1] > lead.high) return false;
        for (std::size_t i = 2; i <= lead.following; ++i) {
            if (!isContinuation(data[at + i])) return false;
        }
        at += std::size_t{1} + lead.following;
    }
    return true;
}

bool isValidUtf8(std::string_view text) {
    return isValidUtf8(Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    for (const char c : text) units += utf16Units(c);
    return units;
}

std::size_t utf16Offset(std::string_view text, std::size_t units) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t width = utf16Units(text[at]);
        if (width == 0) continue;
        if (units < width) return at;
        units -= width;
    }
    return text.size();
}

std::string_view utf16Substring(std::string_view text, std::size_t position, std::size_t count) {
    text.remove_prefix(utf16Offset(text, position));
    return text.substr(0, utf16Offset(text, count));
}

char32_t takeCodePoint(std::string_view& text) {
    const auto first = static_cast<std::uint8_t>(text.front());
    const std::size_t following = leadOf(first).following;
    char32_t value = following == 0 ? first : first & (0x3FU >> following);
    std::size_t used = 1;
    for (; used <= following && used < text.size(); ++used) {
        value = (value << 6) | (static_cast<std::uint8_t>(text[used]) & 0x3FU);
    }
    text.remove_prefix(used);
    return value;
}

}  // namespace salvor
