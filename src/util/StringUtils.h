#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "util/Bytes.h"
#include "util/Text.h"

namespace salvor {

/// Clean-up and conversion of texts. Texts are UTF-8; characters are counted in UTF-16 units. An
/// absent text is treated as an empty one.
struct StringUtils {
    static constexpr std::int64_t NotFound = -1;

    static bool IsNullOrEmpty(const Text& text);
    static std::string NullToEmpty(const Text& text);
    static std::string RemoveSpaces(const Text& text);
    /// Without " " and "(0)", then without one leading "0".
    static std::string RemoveSpacesAndPhoneBracketZeros(const Text& text);
    /// An address-book label without its "_$!<" and ">!$_" marks; "Other" for an empty one.
    static std::string FormatAbMultiValueLabel(const Text& label);
    /// The host of a URL, or the first 15 characters of a text without "/" and "?".
    static std::string ClearUrl(const Text& url);
    static std::string getStringFromObject(
        const std::variant<std::int64_t, double, std::string>& value);
    /// Position of the last occurrence, `NotFound` without one. Kept: index-is-the-last.
    static std::int64_t indexOf(const Text& text, std::string_view toFind);

    /// With the letters A to Z, and no others, in lower case.
    static std::string lowerCase(std::string text);

    /// The bytes as text; absent when they are not valid UTF-8.
    static Text BytesToString(Bytes bytes);
    /// Two lower-case hexadecimal digits a byte.
    static std::string ByteArrayToString(Bytes bytes);
    static std::string NSDataToHex(Bytes bytes);
    static std::string stringToHex(std::string_view text);
    /// Lower-case hexadecimal digit of the low four bits.
    static char itoh(int value);

    /// `text` with every `what` replaced, found from left to right without overlap.
    static std::string replaceAll(std::string_view text, std::string_view what,
                                  std::string_view with);
    /// The shortest decimal text that reads back as the same number.
    static std::string numberToText(double number);
    /// `text` is there and equals `other`; an absent text equals nothing, not even an absent one.
    static bool sameText(const Text& text, const Text& other);
};

}  // namespace salvor
