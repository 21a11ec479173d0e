#include "services/database/Utf8Check.h"

#include <cstddef>
#include <cstdint>

namespace salvor {
namespace {

/// A lead byte's range, the bytes that follow it, and the bounds of the first of these.
struct LeadByte {
    std::uint8_t first, last, following, low, high;
};

constexpr LeadByte kLeadBytes[] = {
    {0x00, 0x7F, 0, 0x80, 0xBF}, {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF},
    {0xE1, 0xEC, 2, 0x80, 0xBF}, {0xED, 0xED, 2, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x80, 0xBF},
    {0xF0, 0xF0, 3, 0x90, 0xBF}, {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F}};

/// Length of the character at `at`, 0 when there is none.
std::size_t characterLength(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
    for (const auto& lead : kLeadBytes) {
        if (byte(at) < lead.first || byte(at) > lead.last) continue;
        if (lead.following >= text.size() - at) return 0;
        for (std::size_t i = 1; i <= lead.following; ++i) {
            const std::uint8_t low = i == 1 ? lead.low : 0x80;
            const std::uint8_t high = i == 1 ? lead.high : 0xBF;
            if (byte(at + i) < low || byte(at + i) > high) return 0;
        }
        return lead.following + std::size_t{1};
    }
    return 0;
}

}  // namespace

bool isStrictUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

}  // namespace salvor
