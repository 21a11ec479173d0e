#include "cli/DisplayText.h"

#include <gtest/gtest.h>
#include <sstream>

#include "cli/TextTable.h"

namespace salvor::cli {
namespace {

TEST(DisplayTextTest, HidesWhatATerminalWouldObey) {
    struct Case {
        std::string text;
        std::string shown;
    };
    const Case cases[] = {
        {"Zoë's 電話 🎉", "Zoë's 電話 🎉"},
        {"a\x1b[2Jb", "a\uFFFD[2Jb"},
        {std::string("a\0b\n", 4), "a\uFFFDb\uFFFD"},
        {"\u009b31m", "\uFFFD31m"},
        {"fdp\u202Etxt", "fdp\uFFFDtxt"},
        {"\xC0\x80\xED\xA0\x80\xF5", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"cut \xE9\x9B", "cut \uFFFD\uFFFD"},
    };
    for (const auto& [text, shown] : cases) EXPECT_EQ(printable(text), shown) << text;
}

TEST(DisplayTextTest, CountsColumns) {
    EXPECT_EQ(displayWidth("abc"), 3U);
    EXPECT_EQ(displayWidth("電話"), 4U);
    EXPECT_EQ(displayWidth("e\u0301"), 1U);
    EXPECT_EQ(displayWidth("🎉"), 2U);
}

TEST(DisplayTextTest, CutsAtCharacters) {
    EXPECT_EQ(fitted("電話番号", 8), "電話番号");
    EXPECT_EQ(fitted("電話番号", 7), "電話番…");
    EXPECT_EQ(fitted("電話番号", 6), "電話…");
    EXPECT_EQ(fitted("abc", 1), "…");
    EXPECT_EQ(fitted("abc", 0), "");
}

TEST(DisplayTextTest, GroupsDigits) {
    EXPECT_EQ(shownCount(0), "0");
    EXPECT_EQ(shownCount(999), "999");
    EXPECT_EQ(shownCount(1234567), "1,234,567");
}

TEST(TextTableTest, AlignsWideNames) {
    using enum TextTable::Align;
    TextTable table({Left, Right, Left});
    table.add({"電話", "7", "x"});
    table.add({"Anna", "1204", "a\tb"});
    table.add({"Jo", "", ""});
    std::ostringstream out;
    table.write(out);
    EXPECT_EQ(out.str(), "電話     7  x\nAnna  1204  a\uFFFDb\nJo          \n");
}

}  // namespace
}  // namespace salvor::cli
