#include "carving/signatures/TablePattern.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace salvor {
namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const auto end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

// Leading white space, a sign and the leading digits; anything else is 0. Numbers beyond 32 bits
// stop at the largest.
std::int32_t leadingNumber(std::string_view text) {
    constexpr std::string_view kSpaces = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(kSpaces), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    constexpr std::int64_t kMost = std::int64_t{1} << 40;
    std::int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        number = std::min(kMost, number * 10 + (c - '0'));
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(negative ? -number : number, Limits::min(), Limits::max()));
}

}  // namespace

bool TablePattern::CheckIfVersionSupported(const std::string& version) const {
    return std::find(SupportedVersions.begin(), SupportedVersions.end(), version) !=
           SupportedVersions.end();
}

HeaderPattern TablePattern::Header() const {
    HeaderPattern columnCodes;
    for (const std::string_view column : split(headerPattern, ';')) {
        std::string codes(column);
        std::erase_if(codes, [](char c) { return c == '[' || c == ']'; });
        std::vector<std::int32_t> decoded;
        for (const std::string_view code : split(codes, ','))
            decoded.push_back(leadingNumber(code));
        columnCodes.push_back(std::move(decoded));
    }
    return columnCodes;
}

const salvor::AttributesMapping* TablePattern::mappingForColumn(std::int64_t column) const {
    const auto found =
        std::find_if(AttributesMapping.begin(), AttributesMapping.end(),
                     [column](const auto& mapping) { return mapping.Column == column; });
    return found == AttributesMapping.end() ? nullptr : &*found;
}

}  // namespace salvor
