// Single values as columns hold them: dates from any number, texts, phone numbers, addresses.
#include <bit>
#include <cstring>

#include "fuzz/Target.h"
#include "util/DateUtils.h"
#include "util/StringUtils.h"
#include "util/Utf8.h"
#include "util/iPhoneNumberUtils.h"

using namespace salvor;

namespace {

template <class Number>
Number numberAt(Bytes input, std::size_t at) {
    Number number{};
    const Bytes bytes = slice(input, at, sizeof number);
    if (!bytes.empty()) std::memcpy(&number, bytes.data(), bytes.size());
    return number;
}

void dates(std::int64_t integer, double number) {
    DateUtils::IOSDateTimeToString(integer);
    DateUtils::LongToString(integer);
    DateUtils::doubleIOSDateTimeToString(number);
    DateUtils::ConvertFromUnixTimestampToString(number);
    const auto date = DateUtils::ConvertFromUnixTimeStampToDateTime(number);
    if (!date) return;
    DateUtils::DateTimeToStringWithOffset(*date);
    DateUtils::DateTimeToIso8601(*date);
    for (const auto pattern : {DatePattern::Display, DatePattern::DisplayMinutes,
                               DatePattern::Export, DatePattern::Folder, DatePattern::TwelveHours,
                               DatePattern::Server, DatePattern::DayMonth})
        fuzz::expect(!DateUtils::format(*date, pattern).empty(), "a date has a text");
}

void dateTexts(const std::string& text) {
    DateUtils::StringToDateTime(text);
    DateUtils::parseDisplayDate(text);
    for (const auto pattern : {DatePattern::Export, DatePattern::Folder})
        DateUtils::reformatDisplayDate(text, pattern);
}

void numbers(const Text& first, const Text& second) {
    iPhoneNumberUtils::IsPhoneNumber(first);
    const bool equal = iPhoneNumberUtils::AreEqual(first, second);
    fuzz::expect(!equal || (first && second), "an absent number equals nothing");
    StringUtils::RemoveSpacesAndPhoneBracketZeros(first);
    StringUtils::FormatAbMultiValueLabel(first);
    StringUtils::ClearUrl(first);
    StringUtils::indexOf(first, *second);
}

void units(const std::string& text) {
    if (!isValidUtf8(text)) return;
    const std::size_t length = utf16Length(text);
    fuzz::expect(length <= text.size(), "a unit takes a byte at least");
    for (std::size_t i = 0; i <= length; i += 1 + length / 16) {
        const auto front = utf16Substring(text, 0, i);
        fuzz::expect(isValidUtf8(front), "no cut splits a character");
        fuzz::expect(utf16Offset(text, i) == front.size(), "offset and length agree");
    }
}

}  // namespace

SALVOR_FUZZ_TARGET(values) {
    dates(numberAt<std::int64_t>(input, 0), numberAt<double>(input, 0));
    const std::string text(fuzz::asText(slice(input, 8, input.size())));
    dateTexts(text);
    const auto middle = text.size() / 2;
    numbers(text.substr(0, middle), text.substr(middle));
    units(text);
    const double number = numberAt<double>(input, 0);
    const std::string shown = StringUtils::numberToText(number);
    fuzz::expect(!shown.empty(), "a number has a text");
}
