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

std::string rowAt(const std::vector<CarvedRow>& rows, std::size_t index) {
    return index < rows.size() ? describe(rows[index]) : "no row";
}

/// Zeroes every piece of `length` bytes behind the header whose loss leaves the difference.
void blank(Buffer& file, std::size_t length, const std::function<bool(const Buffer&)>& differs) {
    constexpr std::size_t kHeader = 56;
    for (std::size_t at = kHeader; at < file.size(); at += length) {
        Buffer tried = file;
        const auto begin = tried.begin() + static_cast<std::ptrdiff_t>(at);
        const auto count = std::min(length, tried.size() - at);
        std::fill_n(begin, count, std::uint8_t{0});
        if (tried != file && differs(tried)) file = tried;
    }
}

}  // namespace

std::string describe(const CarvedRow& row) {
    std::string text = fmt::format("{} at {} page {} {}", row.rowId, row.origin.offset,
                                   row.origin.page, toString(row.origin.space));
    for (const auto& [name, value] : row.columns)
        text += fmt::format(" {}={}", name, value ? std::visit(DescribeValue(), *value) : "absent");
    return text;
}

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

Buffer shrink(Buffer file, const std::function<bool(const Buffer&)>& differs) {
    for (std::size_t piece = file.size() / 2; piece > 0; piece /= 2) {
        while (file.size() > piece) {
            const Buffer tried(file.begin(), file.end() - static_cast<std::ptrdiff_t>(piece));
            if (!differs(tried)) break;
            file = tried;
        }
    }
    for (const std::size_t length : {1024U, 256U, 64U, 16U, 4U, 1U})
        if (file.size() / length < 4000) blank(file, length, differs);
    return file;
}

std::string dump(const CaseRun& run, const Buffer& file) {
    std::string text = fmt::format("fullSearch {} callList {} version {}; {} bytes", run.fullSearch,
                                   run.callList, run.version.value_or("any"), file.size());
    if (file.size() >= 56)
        text += fmt::format(", page size {}, pages {}, first trunk {}, last root {}",
                            bigEndian(file, 16, 2), bigEndian(file, 28, 4), bigEndian(file, 32, 4),
                            bigEndian(file, 52, 4));
    text += '\n';
    for (std::size_t at = 0; at < file.size(); at += 16) {
        const Buffer line(
            file.begin() + static_cast<std::ptrdiff_t>(at),
            file.begin() + static_cast<std::ptrdiff_t>(std::min(at + 16, file.size())));
        if (std::all_of(line.begin(), line.end(), [](std::uint8_t byte) { return byte == 0; }))
            continue;
        text += fmt::format("  {:6}: {:02x}\n", at, fmt::join(line, " "));
    }
    return text;
}

}  // namespace salvor::reference
