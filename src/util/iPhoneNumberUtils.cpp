#include "util/iPhoneNumberUtils.h"

#include <string_view>

#include "util/Utf8.h"

namespace salvor {
namespace {

bool isWhiteSpace(char32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

}  // namespace

bool iPhoneNumberUtils::StartWithPlusSign(const Text& text) {
    return text && text->starts_with('+');
}

bool iPhoneNumberUtils::IsPhoneNumber(const Text& text) {
    if (!text) return false;
    for (std::string_view rest = *text; !rest.empty();) {
        const char32_t c = takeCodePoint(rest);
        const bool digit = c >= '0' && c <= '9';
        if (!digit && c != '+' && c != '-' && !isWhiteSpace(c)) return false;
    }
    return true;
}

bool iPhoneNumberUtils::AreEqual(const Text& number1, const Text& number2) {
    constexpr std::size_t shortest = 4;
    if (!number1 || !number2) return false;
    const std::string first = StringUtils::RemoveSpacesAndPhoneBracketZeros(number1);
    if (utf16Length(first) < shortest) return *number1 == *number2;
    const std::string second = StringUtils::RemoveSpacesAndPhoneBracketZeros(number2);
    if (second.empty()) return false;
    return first.size() >= second.size() ? first.ends_with(second) : second.ends_with(first);
}

}  // namespace salvor
