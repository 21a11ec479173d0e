#include "cli/DisplayText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <iterator>

#include "util/TerminalText.h"

namespace salvor::cli {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

struct Range {
    char32_t first;
    char32_t last;
};

// Sorted. Blocks whose characters take two columns (East Asian wide and full-width, emoji).
constexpr std::array kWide = {
    Range{0x1100, 0x115F},   Range{0x231A, 0x231B},   Range{0x23E9, 0x23EC},
    Range{0x2E80, 0x303E},   Range{0x3041, 0xA4CF},   Range{0xA960, 0xA97F},
    Range{0xAC00, 0xD7A3},   Range{0xF900, 0xFAFF},   Range{0xFE30, 0xFE6F},
    Range{0xFF01, 0xFF60},   Range{0xFFE0, 0xFFE6},   Range{0x1F300, 0x1F64F},
    Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1F9FF}, Range{0x1FA70, 0x1FAFF},
    Range{0x20000, 0x3FFFD},
};
// Sorted. Combining marks, joiners and variation selectors take none.
constexpr std::array kZero = {
    Range{0x0300, 0x036F}, Range{0x0483, 0x0489}, Range{0x0591, 0x05BD},   Range{0x0610, 0x061A},
    Range{0x064B, 0x065F}, Range{0x0900, 0x0902}, Range{0x093C, 0x093C},   Range{0x0941, 0x0948},
    Range{0x0E31, 0x0E31}, Range{0x0E34, 0x0E3A}, Range{0x0E47, 0x0E4E},   Range{0x1AB0, 0x1AFF},
    Range{0x1DC0, 0x1DFF}, Range{0x200B, 0x200D}, Range{0x20D0, 0x20FF},   Range{0x3099, 0x309A},
    Range{0xFE00, 0xFE0F}, Range{0xFE20, 0xFE2F}, Range{0xE0100, 0xE01EF},
};

template <std::size_t Count>
bool contains(const std::array<Range, Count>& ranges, char32_t character) {
    const auto after =
        std::upper_bound(ranges.begin(), ranges.end(), character,
                         [](char32_t value, const Range& range) { return value < range.first; });
    return after != ranges.begin() && character <= std::prev(after)->last;
}

struct Decoded {
    char32_t character = 0;
    std::size_t length = 1;
    bool valid = false;
};

/// The character at the start of `text`, which is not empty; an invalid byte stands for itself.
Decoded decodeFirst(std::string_view text) {
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<std::uint8_t>(text[0]);
    if (lead < 0x80) return {lead, 1, true};
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || lead > 0xF4 || text.size() < length) return {};
    char32_t character = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<std::uint8_t>(text[i]);
        if ((next & 0xC0U) != 0x80) return {};
        character = (character << 6U) | (next & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kSmallest[length] || character > 0x10FFFF || surrogate) return {};
    return {character, length, true};
}

std::size_t widthOf(const Decoded& decoded) {
    if (!decoded.valid) return 1;
    if (contains(kZero, decoded.character)) return 0;
    return contains(kWide, decoded.character) ? 2 : 1;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const auto decoded = decodeFirst(text);
        const bool hidden = !decoded.valid || isObeyedByTerminals(decoded.character);
        shown += hidden ? kReplacement : text.substr(0, decoded.length);
        text.remove_prefix(decoded.length);
    }
    return shown;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const auto decoded = decodeFirst(text);
        width += widthOf(decoded);
        text.remove_prefix(decoded.length);
    }
    return width;
}

std::string fitted(std::string_view text, std::size_t columns) {
    if (displayWidth(text) <= columns) return std::string(text);
    if (columns == 0) return {};
    std::size_t width = 0;
    std::size_t taken = 0;
    while (taken < text.size()) {
        const auto decoded = decodeFirst(text.substr(taken));
        if (width + widthOf(decoded) > columns - 1) break;
        width += widthOf(decoded);
        taken += decoded.length;
    }
    return std::string(text.substr(0, taken)) + std::string(kEllipsis);
}

std::string shownTime(std::int64_t unixSeconds) {
    const auto time = static_cast<std::time_t>(unixSeconds);
    std::tm parts{};
    return localtime_r(&time, &parts) == nullptr ? "" : fmt::format("{:%Y-%m-%d %H:%M:%S}", parts);
}

}  // namespace salvor::cli
