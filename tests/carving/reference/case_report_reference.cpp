#include <algorithm>
#include <bit>
#include <fmt/format.h>

#include "case_report.h"

namespace salvor::reference {
namespace {

std::string printable(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const bool plain = c >= ' ' && c < 127 && c != '\\';
        out += plain ? std::string(1, c) : fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    }
    return out;
}

/// Doubles by their bits, so that two texts are equal when the values are.
std::string describe(const OptionalColumnValue& value) {
    if (!value) return "absent";
    if (const auto* text = std::get_if<std::string>(&*value)) return "\"" + printable(*text) + "\"";
    if (const auto* real = std::get_if<double>(&*value))
        return fmt::format("double {:016x}", std::bit_cast<std::uint64_t>(*real));
    return std::to_string(std::get<std::int64_t>(*value));
}

/// On one line.
std::string rowAt(const std::vector<CarvedRow>& rows, std::size_t index) {
    if (index >= rows.size()) return "no row";
    const auto& [database, offset, page, space] = rows[index].origin;
    std::string text =
        fmt::format("{} at {} page {} {}", rows[index].rowId, offset, page, toString(space));
    for (const auto& [name, value] : rows[index].columns)
        text += fmt::format(" {}={}", name, describe(value));
    return text;
}

}  // namespace

std::string difference(const std::vector<CarvedRow>& expected,
                       const std::vector<CarvedRow>& actual) {
    for (std::size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
        const std::string left = rowAt(expected, i);
        const std::string right = rowAt(actual, i);
        if (left != right)
            return fmt::format("row {} of {} and {}\n  expected {}\n  actual   {}\n", i,
                               expected.size(), actual.size(), left, right);
    }
    return {};
}

}  // namespace salvor::reference
