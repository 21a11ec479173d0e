#include "util/Text.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <unordered_map>
#include <vector>

#include "records/ContactPhoneNumber.h"
#include "util/StringUtils.h"
#include "util/TextMap.h"
#include "util/Utf8.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {
namespace {

using namespace std::string_literals;

TEST(Text, ComparesAsAnOptionalStringDoes) {
    const std::vector<std::optional<std::string>> strings = {
        std::nullopt, "", "a", "b", std::string(2, '\0'), std::string(40, 'x'), "a"};
    for (const auto& a : strings) {
        const Text first = a ? Text(*a) : std::nullopt;
        EXPECT_EQ(first.has_value(), a.has_value());
        EXPECT_EQ(first == std::nullopt, a == std::nullopt);
        EXPECT_EQ(first.value_or("none"), a.value_or("none"));
        EXPECT_EQ(first == "a", a == "a");
        for (const auto& b : strings) {
            const Text second = b ? Text(*b) : std::nullopt;
            EXPECT_EQ(first == second, a == b) << first << second;
            EXPECT_EQ(first < second, a < b) << first << second;
        }
    }
    EXPECT_THROW((void)Text().value(), std::bad_optional_access);
}

TEST(Text, IsHeldByWhoeverStillHasIt) {
    for (const auto& content : {"short and shared"s, std::string(1000, 'l'), ""s}) {
        Text kept = content;
        const char* const bytes = kept->data();
        {
            const Text copy = kept;
            Text other = "other";
            other = copy;
            EXPECT_EQ(other->data(), bytes);
            kept = other;
            kept = *&kept;
            Text moved = std::move(other);
            EXPECT_EQ(moved->data(), bytes);
            EXPECT_FALSE(other);  // NOLINT(bugprone-use-after-move): absent from then on
        }
        EXPECT_EQ(kept, content);
        kept.reset();
        EXPECT_FALSE(kept);
    }
    EXPECT_EQ(Text("repeated")->data(), Text("repeated")->data());
}

TEST(TextMap, KeepsTheFirstValueOfEachKey) {
    TextMap<int> map;
    std::unordered_map<std::string, int> expected;
    for (int i = 0; i < 5000; ++i) {
        const std::string key = std::to_string(i * i % 3001);
        map.tryEmplace(key, i);
        expected.try_emplace(key, i);
    }
    map.tryEmplace(std::nullopt, 1);
    EXPECT_EQ(map.size(), expected.size());
    for (int i = -1; i < 3001; ++i) {
        const auto key = std::to_string(i);
        ASSERT_EQ(map.contains(key), expected.contains(key)) << i;
        if (const int* found = map.find(key)) {
            ASSERT_EQ(*found, expected[key]) << i;
        }
    }
    EXPECT_FALSE(map.contains(std::nullopt));
}

// For the sanitizers, too: texts of one thread outlive it and are let go by others.
TEST(Text, IsSharedByThreads) {
    const Text common = "common";
    std::vector<Text> texts(8);
    {
        std::vector<std::jthread> threads;
        for (Text& text : texts) {
            threads.emplace_back([&text, copy = common] {
                for (int i = 0; i < 2000; ++i) text = i % 2 != 0 ? copy : Text(std::to_string(i));
                text = "left behind";
            });
        }
    }
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "left behind"), 8);
    EXPECT_EQ(common, "common");
}

TEST(Utf8, AcceptsExactlyTheStrictForms) {
    for (const auto& text : {""s, "plain ascii of some length"s, "a\0b"s, "\x7F"s, "\xC2\x80"s,
                             "\xDF\xBF"s, "\xE0\xA0\x80"s, "\xED\x9F\xBF"s, "\xEF\xBF\xBF"s,
                             "\xF0\x90\x80\x80"s, "\xF4\x8F\xBF\xBF"s}) {
        EXPECT_TRUE(isValidUtf8(text)) << StringUtils::stringToHex(text);
    }
    const std::vector<std::string> refused[] = {
        {"\x80", "\xFF", "\xF5\x80\x80\x80", "12345678\x80"},          // what begins no character
        {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF"},  // overlong
        {"\xED\xA0\x80", "\xF4\x90\x80\x80"},                 // a surrogate, above U+10FFFF
        {"\xC2", "\xE2\x82", "\xF0\x9F\x98", "1234567\xC3"},  // cut short
        {"\xE2\x28\xA1", "\xF0\x9F\x28\x80"},                 // continued by something else
    };
    for (const auto& kind : refused) {
        for (const auto& text : kind) {
            EXPECT_FALSE(isValidUtf8(text)) << StringUtils::stringToHex(text);
        }
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

TEST(StringUtils, ClearsNumbersLabelsAndUrls) {
    const struct {
        std::string (*clear)(const Text&);
        Text text;
        const char* cleared;
    } cases[] = {
        {StringUtils::RemoveSpacesAndPhoneBracketZeros, "0 (0)20 7946", "207946"},
        {StringUtils::RemoveSpacesAndPhoneBracketZeros, "+44 ( 0 )7", "+447"},
        {StringUtils::RemoveSpacesAndPhoneBracketZeros, "((0)0)00", "(0)00"},
        {StringUtils::RemoveSpacesAndPhoneBracketZeros, "0012", "012"},
        {StringUtils::RemoveSpacesAndPhoneBracketZeros, std::nullopt, ""},
        {StringUtils::FormatAbMultiValueLabel, "_$!<Mobile>!$_", "Mobile"},
        {StringUtils::FormatAbMultiValueLabel, "custom", "custom"},
        {StringUtils::FormatAbMultiValueLabel, "", "Other"},
        {StringUtils::FormatAbMultiValueLabel, std::nullopt, "Other"},
        {StringUtils::ClearUrl, "https://abc/def", "abc"},
        {StringUtils::ClearUrl, "http://abc?x/y",
         "abc?x"},  // the first "/" wins over an earlier "?"
        {StringUtils::ClearUrl, "http://abc?x", "abc"},
        {StringUtils::ClearUrl, "12345678901234567890", "123456789012345"},
        {StringUtils::ClearUrl, "http://https://abc/", "abc"},
        {StringUtils::ClearUrl, "/x", ""},
        {StringUtils::ClearUrl, "", ""},
    };
    for (const auto& [clear, text, cleared] : cases) {
        EXPECT_EQ(clear(text), cleared) << text.value_or("absent");
    }
}

TEST(StringUtils, FindsComparesAndWritesTexts) {
    EXPECT_EQ(StringUtils::indexOf("a@b@c", "@"), 3) << "the last occurrence";
    EXPECT_EQ(StringUtils::indexOf("\U0001F600@", "@"), 2);
    EXPECT_EQ(StringUtils::indexOf("abc", "@"), StringUtils::NotFound);
    EXPECT_EQ(StringUtils::indexOf(std::nullopt, "@"), StringUtils::NotFound);
    EXPECT_EQ(StringUtils::replaceAll("aaa", "aa", "b"), "ba");
    EXPECT_TRUE(StringUtils::sameText("", ""));
    EXPECT_FALSE(StringUtils::sameText(std::nullopt, std::nullopt)) << "absent equals nothing";
    EXPECT_FALSE(StringUtils::sameText(std::nullopt, ""));
    EXPECT_EQ(StringUtils::getStringFromObject("x"s), "x");
    EXPECT_EQ(StringUtils::getStringFromObject(std::int64_t{-42}), "-42");
    EXPECT_EQ(StringUtils::getStringFromObject(0.1), "0.1");
    EXPECT_EQ(StringUtils::getStringFromObject(398000000.0), "398000000");
    EXPECT_EQ(StringUtils::stringToHex("\x0F\xA0"), "0fa0");
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
    const std::pair<const char*, const char*> equal[] = {
        {"+44 (0)7700 900123", "07700900123"},
        {"07700900123", "+44 (0)7700 900123"},
        {"1234", "551234"},
        {"123", "123"},
        {"55123", "123"},  // only the length of the first number counts
    };
    for (const auto& [a, b] : equal) EXPECT_TRUE(iPhoneNumberUtils::AreEqual(Text(a), b)) << a;
    const std::pair<Text, Text> unequal[] = {
        {"123", "55123"},
        {"0 1 2 3", "0123"},  // normalised 123: too short, and the originals differ
        {"1234567", "234568"},
        {"1234567", ""},
        {"1234567", std::nullopt},
        {std::nullopt, std::nullopt},
    };
    for (const auto& [a, b] : unequal) {
        EXPECT_FALSE(iPhoneNumberUtils::AreEqual(a, b)) << a.value_or("-") << b.value_or("-");
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

}  // namespace
}  // namespace salvor
