#include <algorithm>
#include <bit>
#include <fmt/format.h>

#include "case_report.h"

namespace salvor::reference {
namespace {

std::string printable(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c >= ' ' && c < 127 && c != '\\')
            out += c;
        else
            out += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    }
    return out;
}

struct DescribeValue {
    std::string operator()(std::int64_t value) const { return fmt::format("{}", value); }
    std::string operator()(double value) const {
        return fmt::format("double {:016x}", std::bit_cast<std::uint64_t>(value));
    }
    std::string operator()(const std::string& value) const {
        return fmt::format("\"{}\"", printable(value));
    }
};

/// One row on one line; doubles by their bits, so that two lines are equal when the rows are.
std::string describe(const CarvedRow& row) {
    std::string text = fmt::format("{} at {} page {} {}", row.rowId, row.origin.offset,
                                   row.origin.page, toString(row.origin.space));
    for (const auto& [name, value] : row.columns)
        text += fmt::format(" {}={}", name, value ? std::visit(DescribeValue(), *value) : "absent");
    return text;
}

std::string rowAt(const std::vector<CarvedRow>& rows, std::size_t index) {
    return index < rows.size() ? describe(rows[index]) : "no row";
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
