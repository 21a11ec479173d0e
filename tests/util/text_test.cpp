#include <gtest/gtest.h>

#include "records/ContactPhoneNumber.h"
#include "util/Sha1.h"
#include "util/StringUtils.h"
#include "util/Utf8.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {
namespace {

using namespace std::string_literals;

TEST(Utf8, AcceptsExactlyTheStrictForms) {
    const std::pair<std::string, bool> cases[] = {
        {"", true},
        {"plain ascii of some length", true},
        {"a\0b"s, true},
        {"\x7F", true},
        {"\xC2\x80", true},
        {"\xDF\xBF", true},
        {"\xE0\xA0\x80", true},
        {"\xED\x9F\xBF", true},
        {"\xEF\xBF\xBF", true},
        {"\xF0\x90\x80\x80", true},
        {"\xF4\x8F\xBF\xBF", true},
        {"\x80", false},              // continuation alone
        {"\xC0\x80", false},          // overlong
        {"\xC1\xBF", false},          // overlong
        {"\xE0\x9F\xBF", false},      // overlong
        {"\xF0\x8F\xBF\xBF", false},  // overlong
        {"\xED\xA0\x80", false},      // surrogate
        {"\xF4\x90\x80\x80", false},  // above U+10FFFF
        {"\xF5\x80\x80\x80", false},
        {"\xFF", false},
        {"\xC2", false},  // cut short
        {"\xE2\x82", false},
        {"\xF0\x9F\x98", false},
        {"\xE2\x28\xA1", false},
        {"\xF0\x9F\x28\x80", false},
        {"12345678\x80"s, false},
        {"1234567\xC3"s, false},
    };
    for (const auto& [text, valid] : cases) {
        EXPECT_EQ(isValidUtf8(text), valid) << StringUtils::stringToHex(text);
    }
}

TEST(Utf8, CountsAndCutsInUtf16Units) {
    const std::string text = "a\u00E9\U0001F600z";  // 1 + 1 + 2 + 1 units
    EXPECT_EQ(utf16Length(text), 5U);
    EXPECT_EQ(utf16Substring(text, 0, 2), "a\u00E9");
    EXPECT_EQ(utf16Substring(text, 2, 2), "\U0001F600");
    EXPECT_EQ(utf16Substring(text, 0, 3), "a\u00E9");  // a pair is never split
    EXPECT_EQ(utf16Substring(text, 4), "z");
    EXPECT_EQ(utf16Substring(text, 9), "");
    std::string_view rest = text;
    EXPECT_EQ(takeCodePoint(rest), U'a');
    EXPECT_EQ(takeCodePoint(rest), U'\u00E9');
    EXPECT_EQ(takeCodePoint(rest), U'\U0001F600');
    EXPECT_EQ(rest, "z");
}

TEST(StringUtils, ClearsNumbersAndLabels) {
    EXPECT_EQ(StringUtils::RemoveSpacesAndPhoneBracketZeros("0 (0)20 7946"), "207946");
    EXPECT_EQ(StringUtils::RemoveSpacesAndPhoneBracketZeros("+44 ( 0 )7"), "+447");
    EXPECT_EQ(StringUtils::RemoveSpacesAndPhoneBracketZeros("((0)0)00"), "(0)00");
    EXPECT_EQ(StringUtils::RemoveSpacesAndPhoneBracketZeros("0012"), "012");
    EXPECT_EQ(StringUtils::RemoveSpacesAndPhoneBracketZeros(std::nullopt), "");
    EXPECT_EQ(StringUtils::FormatAbMultiValueLabel("_$!<Mobile>!$_"), "Mobile");
    EXPECT_EQ(StringUtils::FormatAbMultiValueLabel("custom"), "custom");
    EXPECT_EQ(StringUtils::FormatAbMultiValueLabel(""), "Other");
    EXPECT_EQ(StringUtils::FormatAbMultiValueLabel(std::nullopt), "Other");
}

TEST(StringUtils, ClearsUrls) {
    const std::pair<const char*, const char*> cases[] = {
        {"https://abc/def", "abc"},
        {"http://abc?x/y", "abc?x"},  // the first "/" wins over an earlier "?"
        {"http://abc?x", "abc"},
        {"12345678901234567890", "123456789012345"},
        {"123456789012345", "123456789012345"},
        {"http://https://abc/", "abc"},
        {"/x", ""},
        {"", ""},
    };
    for (const auto& [url, cleared] : cases) EXPECT_EQ(StringUtils::ClearUrl(url), cleared) << url;
}

TEST(StringUtils, FindsTheLastOccurrence) {
    EXPECT_EQ(StringUtils::indexOf("a@b@c", "@"), 3);
    EXPECT_EQ(StringUtils::indexOf("\U0001F600@", "@"), 2);
    EXPECT_EQ(StringUtils::indexOf("abc", "@"), StringUtils::NotFound);
    EXPECT_EQ(StringUtils::indexOf(std::nullopt, "@"), StringUtils::NotFound);
}

TEST(StringUtils, WritesValuesAsText) {
    EXPECT_EQ(StringUtils::getStringFromObject("x"s), "x");
    EXPECT_EQ(StringUtils::getStringFromObject(std::int64_t{-42}), "-42");
    EXPECT_EQ(StringUtils::getStringFromObject(0.1), "0.1");
    EXPECT_EQ(StringUtils::getStringFromObject(398000000.0), "398000000");
    EXPECT_EQ(StringUtils::getStringFromObject(398000000.25), "398000000.25");
    EXPECT_EQ(StringUtils::stringToHex("\x0F\xA0"), "0fa0");
    EXPECT_EQ(StringUtils::replaceAll("aaa", "aa", "b"), "ba");
}

TEST(StringUtils, AbsentTextEqualsNothing) {
    EXPECT_TRUE(StringUtils::sameText("", ""));
    EXPECT_FALSE(StringUtils::sameText(std::nullopt, std::nullopt));
    EXPECT_FALSE(StringUtils::sameText(std::nullopt, ""));
}

TEST(PhoneNumbers, AreToldFromOtherTexts) {
    const std::pair<Text, bool> cases[] = {
        {"+1 555-0100", true}, {"", true},
        {"\t12", true},        {"01234\u00A056789", true},
        {"555.0100", false},   {"(555) 0100", false},
        {"12a", false},        {"\u0661\u0662", false},  // digits of another script
        {std::nullopt, false},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(iPhoneNumberUtils::IsPhoneNumber(text), expected) << text.value_or("(absent)");
    }
}

TEST(PhoneNumbers, CompareByTheirEnds) {
    struct Case {
        Text a, b;
        bool equal;
    };
    const Case cases[] = {
        {"+44 (0)7700 900123", "07700900123", true},
        {"07700900123", "+44 (0)7700 900123", true},
        {"123", "123", true},
        {"123", "55123", false},
        {"0 1 2 3", "0123", false},  // normalised 123: too short, and the originals differ
        {"55123", "123", true},      // only the length of the first number counts
        {"1234567", "234568", false},
        {"1234567", "", false},
        {"1234567", std::nullopt, false},
        {std::nullopt, std::nullopt, false},
    };
    for (const auto& [a, b, equal] : cases) {
        EXPECT_EQ(iPhoneNumberUtils::AreEqual(a, b), equal) << a.value_or("-") << b.value_or("-");
    }
}

TEST(PhoneNumbers, ObjectsCompareByTheirNormalisedForm) {
    ContactPhoneNumber phone;
    phone.PhoneNumber = "0770";
    phone.GooglePhoneNumber = "+44770";
    EXPECT_TRUE(iPhoneNumberUtils::AreEqual(phone, "0770"));
    phone.IsPhoneNumber = true;
    EXPECT_TRUE(iPhoneNumberUtils::AreEqual(phone, "+44770"));
    EXPECT_FALSE(iPhoneNumberUtils::AreEqual(phone, "0770"));
    phone.GooglePhoneNumber.reset();
    EXPECT_TRUE(iPhoneNumberUtils::AreEqual(phone, "0770"));
}

TEST(Sha1, MatchesPublishedDigests) {
    EXPECT_EQ(Sha1::hexDigest(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(Sha1::hexDigest("HomeDomain-Library/SMS/sms.db"),
              "3d0d7e5fb2ce288813306e4d4636395e047a3d28");
}

}  // namespace
}  // namespace salvor
