#include "tools/sample/AttributedText.h"

#include <string_view>

namespace salvor {
namespace {

using namespace std::string_view_literals;

/// One byte below 0x80, else 0x81 and two bytes or 0x82 and four, little-endian.
std::string archivedNumber(std::size_t number) {
    if (number < 0x80) return {static_cast<char>(number)};
    const unsigned width = number < 0x8000 ? 2 : 4;
    std::string bytes(1, width == 2 ? '\x81' : '\x82');
    for (unsigned i = 0; i < width; ++i) {
        bytes += static_cast<char>(static_cast<unsigned char>(number >> (8U * i)));
    }
    return bytes;
}

/// The run's length counts UTF-16 units.
std::size_t unitsOf(std::string_view utf8) {
    std::size_t units = 0;
    for (char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U) units += byte >= 0xF0U ? 2 : 1;
    }
    return units;
}

}  // namespace

std::string attributedText(const std::string& text) {
    std::string bytes(
        "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\x84\x84\x84\x12NSAttributedString\0"
        "\x84\x84\x08NSObject\0\x85\x92\x84\x84\x84\x08NSString\x01\x94\x84\x01+"sv);
    bytes += archivedNumber(text.size());
    bytes += text;
    bytes += "\x86\x84\x02iI\x01"sv;
    bytes += archivedNumber(unitsOf(text));
    bytes +=
        "\x92\x84\x84\x84\x0cNSDictionary\0\x94\x84\x01i\x01\x92\x84\x96\x96\x1d"
        "__kIMMessagePartAttributeName\x86\x92\x84\x84\x84\x08NSNumber\0\x84\x84\x07NSValue\0"
        "\x94\x84\x01*\x84\x99\x99\0\x86\x86\x86"sv;
    return bytes;
}

}  // namespace salvor
