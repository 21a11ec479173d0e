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

TEST(DisplayTextTest, CountsColumnsAndCutsAtCharacters) {
    const std::pair<const char*, std::size_t> widths[] = {
        {"abc", 3}, {"電話", 4}, {"e\u0301", 1}, {"🎉", 2}};
    for (const auto& [text, width] : widths) EXPECT_EQ(displayWidth(text), width) << text;
    const std::tuple<const char*, std::size_t, const char*> cuts[] = {{"電話番号", 8, "電話番号"},
                                                                      {"電話番号", 7, "電話番…"},
                                                                      {"電話番号", 6, "電話…"},
                                                                      {"abc", 1, "…"},
                                                                      {"abc", 0, ""}};
    for (const auto& [text, columns, shown] : cuts) EXPECT_EQ(fitted(text, columns), shown);
    const std::pair<std::uint64_t, const char*> counts[] = {
        {0, "0"}, {999, "999"}, {1234567, "1,234,567"}};
    for (const auto& [count, shown] : counts) EXPECT_EQ(shownCount(count), shown);
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
