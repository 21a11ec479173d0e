#include "util/TerminalText.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <string_view>

#include "util/Utf8.h"

namespace salvor {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// All of them below U+10000, so that one escape is enough.
constexpr std::array kObeyed = {
    Range{0x0000, 0x001F}, Range{0x007F, 0x009F}, Range{0x061C, 0x061C}, Range{0x200E, 0x200F},
    Range{0x2028, 0x202E}, Range{0x2066, 0x2069}, Range{0xFEFF, 0xFEFF},
};

bool isPlain(char c) {
    return static_cast<unsigned char>(c) < 0x7F;
}

}  // namespace

bool isObeyedByTerminals(char32_t character) {
    return std::any_of(kObeyed.begin(), kObeyed.end(), [character](const Range& range) {
        return range.first <= character && character <= range.last;
    });
}

std::string escapedForTerminals(std::string json) {
    if (std::all_of(json.begin(), json.end(), isPlain)) return json;
    std::string escaped;
    escaped.reserve(json.size());
    std::string_view rest = json;
    while (!rest.empty()) {
        const std::string_view before = rest;
        const char32_t character = takeCodePoint(rest);
        const bool plain = character < 0x7F || !isObeyedByTerminals(character);
        if (plain)
            escaped += before.substr(0, before.size() - rest.size());
        else
            escaped += fmt::format("\\u{:04x}", static_cast<std::uint32_t>(character));
    }
    return escaped;
}

}  // namespace salvor
