#include "util/StringUtils.h"

#include <algorithm>
#include <fmt/format.h>

#include "util/Utf8.h"

namespace salvor {

bool StringUtils::IsNullOrEmpty(const Text& text) {
    return text.view().empty();
}

std::string StringUtils::NullToEmpty(const Text& text) {
    return text.value_or("");
}

std::string StringUtils::RemoveSpaces(const Text& text) {
    std::string result = NullToEmpty(text);
    std::erase(result, ' ');
    return result;
}

std::string StringUtils::RemoveSpacesAndPhoneBracketZeros(const Text& text) {
    std::string result = replaceAll(RemoveSpaces(text), "(0)", "");
    if (result.starts_with('0')) result.erase(0, 1);
    return result;
}

std::string StringUtils::FormatAbMultiValueLabel(const Text& label) {
    if (IsNullOrEmpty(label)) return "Other";
    return replaceAll(replaceAll(*label, ">!$_", ""), "_$!<", "");
}

std::string StringUtils::ClearUrl(const Text& url) {
    constexpr std::size_t maxLength = 15;
    std::string result = replaceAll(replaceAll(url.view(), "http://", ""), "https://", "");
    for (const char end : {'/', '?'}) {
        const std::size_t at = result.find(end);
        if (at != std::string::npos) return result.substr(0, at);
    }
    return std::string(utf16Substring(result, 0, maxLength));
}

std::string StringUtils::getStringFromObject(
    const std::variant<std::int64_t, double, std::string>& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* number = std::get_if<double>(&value)) return numberToText(*number);
    return std::to_string(std::get<std::int64_t>(value));
}

std::int64_t StringUtils::indexOf(const Text& text, std::string_view toFind) {
    const std::string_view whole = text.view();
    const std::size_t at = toFind.empty() ? std::string_view::npos : whole.rfind(toFind);
    if (at == std::string_view::npos) return NotFound;
    return static_cast<std::int64_t>(utf16Length(whole.substr(0, at)));
}

std::string StringUtils::lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

Text StringUtils::BytesToString(Bytes bytes) {
    if (!isValidUtf8(bytes)) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::string StringUtils::ByteArrayToString(Bytes bytes) {
    return NSDataToHex(bytes);
}

std::string StringUtils::NSDataToHex(Bytes bytes) {
    std::string result;
    result.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        result += itoh(byte >> 4);
        result += itoh(byte);
    }
    return result;
}

std::string StringUtils::stringToHex(std::string_view text) {
    return NSDataToHex(Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

char StringUtils::itoh(int value) {
    return "0123456789abcdef"[static_cast<unsigned int>(value) & 0xFU];
}

std::string StringUtils::replaceAll(std::string_view text, std::string_view what,
                                    std::string_view with) {
    std::string result;
    result.reserve(text.size());
    std::size_t at = 0;
    while (!what.empty()) {
        const std::size_t hit = text.find(what, at);
        if (hit == std::string_view::npos) break;
        result.append(text.substr(at, hit - at)).append(with);
        at = hit + what.size();
    }
    return result.append(text.substr(at));
}

std::string StringUtils::numberToText(double number) {
    return fmt::format("{}", number);
}

bool StringUtils::sameText(const Text& text, const Text& other) {
    return text && other && *text == *other;
}

}  // namespace salvor
