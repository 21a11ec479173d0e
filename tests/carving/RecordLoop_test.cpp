#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "carving/DataPosition.h"
#include "tests/carving/CarvingFixture.h"

namespace salvor::testing {
namespace {

using ::testing::ElementsAre;

/// The first header in `data`; nothing when a read past the end ended the search.
std::optional<SQLiteTableHeaderInfo> firstHeader(const char* header, Bytes data) {
    PatternMatcher matcher;
    matcher.use({makePattern(header)});
    matcher.begin(data);
    SQLiteTableHeaderInfo info;
    if (matcher.find(0, info) == MatchResult::ReadFailed) return std::nullopt;
    return info;
}

TEST(MatcherTest, HeadersAtTheEndOfTheData) {
    const Buffer longRowId = Buffer(8, 0xFF) + Buffer{1};
    constexpr int kFailed = -1;
    const struct {
        const char* what;
        const char* header;
        Buffer data;
        int entries;  ///< of the header, 0 without a match
    } cases[] = {
        {"one column fits anywhere", "[0]", Buffer(3, 7), 1},
        {"more columns than bytes", "[0];[5];[5];[5]", Buffer(3, 7), 0},
        {"span of nine does not fit", "[0];[5]", Buffer(9, 5), kFailed},
        {"span of nine fits", "[0];[5]", Buffer(10, 5), 2},
        {"enough columns to stay clear of the end", "[0];[5];[5];[5];[5];[5];[5];[5];[5];[5]",
         Buffer(19, 7), 0},
        {"row id swallows the rest", "[1];[0];[0];[5]", longRowId, 3},
        {"cut off behind a long row id", "[1];[0];[0];[5];[5]", longRowId + Buffer{3, 0}, 3},
    };
    for (const auto& [what, header, data, entries] : cases) {
        const auto info = firstHeader(header, data);
        ASSERT_EQ(!info, entries == kFailed) << what;
        if (!info) continue;
        EXPECT_EQ(info->Valid, entries > 0) << what;
        EXPECT_EQ(info->Header.size(), static_cast<std::size_t>(entries)) << what;
        EXPECT_EQ(info->HeaderStartIndex, 0) << what;
    }
}

TEST(MatcherTest, RowIdPatternTakesTwoBytesUnchecked) {
    const Buffer data = Buffer{0x81, 0x01, 99, 88, 4, 0x82, 0x00} + Buffer(33, 0);
    const auto info = firstHeader("[1];[0];[0];[4];[-20]", data);
    ASSERT_TRUE(info && info->Valid);
    EXPECT_EQ(info->RowId, 129);
    EXPECT_THAT(info->Header, ElementsAre(ElementsAre(0, 2), ElementsAre(0, 1), ElementsAre(0, 1),
                                          ElementsAre(4, 1), ElementsAre(256, 2)));
    EXPECT_EQ(info->DataStartIndex(), 7);
    EXPECT_EQ(info->DataContentLength(), 7);
}

TEST(RecordLoopTest, DecodesSerialTypes) {
    const struct {
        int serialType;
        Buffer bytes;
        std::vector<OptionalColumnValue> values;
    } cases[] = {
        {0, {}, {}},
        {1, {0xFF}, {std::int64_t{255}}},
        {2, {0x00, 0x05}, {std::int64_t{1280}}},
        {2, {0x01, 0x80}, {std::int64_t{-32767}}},
        {3, {0xFF, 0x00, 0x01}, {std::int64_t{0xFF0001}}},
        {4, {0xFF, 0xFF, 0xFF, 0xFE}, {std::int64_t{-2}}},
        {5, {0xFF, 0, 0, 0, 0, 2}, {std::int64_t{0xFF0000000002}}},
        {6, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFD}, {std::int64_t{-3}}},
        {7, {0xBF, 0xF8, 0, 0, 0, 0, 0, 0}, {-1.5}},
        {8, {}, {std::int64_t{0}}},
        {9, {}, {std::int64_t{1}}},
        {10, {}, {}},
        {11, {}, {}},
        {12, {}, {std::string()}},
        {16, {'a', 0}, {std::string("a\0", 2)}},
        {16, {'a', 0x80}, {std::nullopt}},
        {13, {}, {std::string()}},
        {17, {0xC3, 0xA9}, {std::string("\xC3\xA9")}},
        {17, {0xC0, 0x80}, {std::nullopt}},
        {19, {0xED, 0xA0, 0x80}, {std::nullopt}},
        {19, {'a', 0, 'b'}, {std::string("a\0b", 3)}},
    };
    for (const auto& [serialType, bytes, values] : cases) {
        // One column, whose value ends with the data.
        const std::string type = std::to_string(serialType);
        Buffer data{0, static_cast<std::uint8_t>(serialType), 41};
        data = data + bytes + Buffer(14, ' ');
        NotingReceiver rows;
        rows.parse(makePattern("[0];[" + type + "];[-25]"), data);
        ASSERT_EQ(rows.rowIds.size(), 1u) << type;
        std::vector<OptionalColumnValue> seen;
        for (const auto& [column, value] : rows.columns) {
            if (column == 1) seen.push_back(value);
        }
        EXPECT_EQ(seen, values) << type;
    }
}

TEST(DataPositionTest, LooksForTheFirstDashOfOneField) {
    const struct {
        std::string_view field;
        const char* text;
        std::int32_t correction;
    } cases[] = {
        {"ZStandZAid", "0123456789-1-", 0},
        {"ZStandZAid", "0123456789ab-", 2},
        {"ZStandZAid", "-", -10},
        {"ZStandZAid", "", -11},
        {"ZStandZAid", "none", -11},
        {"guid", "0123456789ab-", -100},
        {"", "-", -100},
        {"zStandZAid", "-", -100},
    };
    for (const auto& [field, text, correction] : cases) {
        EXPECT_EQ(standardDataPosition(field, bytesOf(text)), correction) << text;
    }
}

}  // namespace
}  // namespace salvor::testing
