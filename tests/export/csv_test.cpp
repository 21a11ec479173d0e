#include <gtest/gtest.h>

#include "export/CsvWriter.h"
#include "tests/export/TempFolder.h"

namespace salvor {
namespace {

TEST(CsvWriter, QuotesWhatNeedsQuotes) {
    const std::pair<std::string_view, const char*> cases[] = {
        {"", ""},
        {"plain text; with 'things'", "plain text; with 'things'"},
        {" padded ", " padded "},
        {"a,b", "\"a,b\""},
        {"say \"hi\"", "\"say \"\"hi\"\"\""},
        {"back\\slash", "\"back\\slash\""},
        {"#first", "\"#first\""},
        {"not#first", "not#first"},
        {"two\nlines", "\"two\nlines\""},
        {"carriage\r", "\"carriage\r\""},
        {"\vtab", "\"\vtab\""},
        {"next\u0085line", "\"next\u0085line\""},
        {"line\u2028separator", "\"line\u2028separator\""},
    };
    const TempFolder folder;
    CsvWriter csv(folder / "file");
    std::string expected;
    for (const auto& [field, written] : cases) {
        csv.writeField("x");
        csv.writeField(field);
        csv.finishLine();
        expected += std::string("x,") + written + "\n";
    }
    EXPECT_EQ(csv.close(), "");
    EXPECT_EQ(contentOf(folder / "file"), expected);
}

TEST(CsvWriter, DelimiterIsFixedOnceWritingStarts) {
    const TempFolder folder;
    CsvWriter csv(folder / "file");
    EXPECT_EQ(csv.setDelimiter("\n"), "\n cannot be used as a delimiter");
    EXPECT_EQ(csv.setDelimiter("\u2028"), "\u2028 cannot be used as a delimiter");
    EXPECT_EQ(csv.setDelimiter(";"), std::nullopt);
    csv.writeField("a,b");
    csv.writeField("c;d");
    EXPECT_EQ(csv.setDelimiter(","), "You cannot set a delimiter after writing has started");
    csv.finishLine();
    csv.close();
    EXPECT_EQ(contentOf(folder / "file"), "a,b;\"c;d\"\n");
}

}  // namespace
}  // namespace salvor
