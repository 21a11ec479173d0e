#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CarvingFixture.h"
#include "carving/AbstractSQLiteRecoveryFullSearch.h"

namespace salvor::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Carver = NotingCarver<>;

/// `bytes` followed by zeroes up to `size`.
Buffer padded(Buffer bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

TEST(MatcherTest, EarlierPatternWinsWhereverItMatches) {
    // The second pattern fits at 0, the first only at 20.
    Buffer data = padded({9, 77, 0}, 60);
    data[21] = 66;
    Carver carver({makePattern("[0];[66];[0]"), makePattern("[0];[77];[0]")});
    const auto info = carver.FindSQLiteTableHeader(data, 0);
    ASSERT_TRUE(info && info->Valid);
    EXPECT_EQ(info->HeaderStartIndex, 20);
    const auto later = carver.FindSQLiteTableHeader(data, 21);
    EXPECT_FALSE(later);  // the first pattern's failing read ends the search for the second, too
}

TEST(MatcherTest, HeadersAtTheEndOfTheData) {
    const struct {
        const char* what;
        const char* header;
        Buffer data;
        bool failed;
        bool valid;
        std::int64_t start;
        std::size_t entries;
    } cases[] = {
        {"one column fits anywhere", "[0]", Buffer(3, 7), false, true, 0, 1},
        {"more columns than bytes", "[0];[5];[5];[5]", Buffer(3, 7), false, false, 0, 0},
        {"span of nine does not fit", "[0];[5]", Buffer(9, 5), true, false, 0, 0},
        {"span of nine fits", "[0];[5]", Buffer(10, 5), false, true, 0, 2},
        {"enough columns to stay clear of the end", "[0];[5];[5];[5];[5];[5];[5];[5];[5];[5]",
         Buffer(19, 7), false, false, 0, 0},
        {"row id swallows the rest",
         "[1];[0];[0];[5]",
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1},
         false,
         true,
         0,
         3},
        {"cut off behind a long row id",
         "[1];[0];[0];[5];[5]",
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 3, 0},
         false,
         true,
         0,
         3},
    };
    for (const auto& one : cases) {
        Carver carver({makePattern(one.header)});
        const auto info = carver.FindSQLiteTableHeader(one.data, 0);
        EXPECT_EQ(!info, one.failed) << one.what;
        if (!info) continue;
        EXPECT_EQ(info->Valid, one.valid) << one.what;
        EXPECT_EQ(info->Header.size(), one.entries) << one.what;
        EXPECT_EQ(info->HeaderStartIndex, one.start) << one.what;
    }
}

TEST(MatcherTest, RowIdPatternTakesTwoBytesUnchecked) {
    const Buffer data = padded({0x81, 0x01, 99, 88, 4, 0x82, 0x00}, 40);
    Carver carver({makePattern("[1];[0];[0];[4];[-20]")});
    const auto info = carver.FindSQLiteTableHeader(data, 0);
    ASSERT_TRUE(info && info->Valid);
    EXPECT_EQ(info->RowId, 129);
    const std::vector<std::array<std::int64_t, 2>> entries{
        {0, 2}, {0, 1}, {0, 1}, {4, 1}, {256, 2}};
    EXPECT_EQ(info->Header, entries);
    EXPECT_EQ(info->DataStartIndex(), 7);
    EXPECT_EQ(info->DataContentLength(), 7);
}

TEST(MatcherTest, ARowIdOfAnotherPatternDoesNotStay) {
    const Buffer data = padded({5, 0, 0, 1, 0, 0, 0, 9}, 60);
    Carver carver(
        {makePattern("[1];[0];[0];[99];[0];[0];[0];[0];[0];[0];[0];[0]"), makePattern("[0];[9]")});
    carver.ParseHeaderAndData(data, 0);
    EXPECT_THAT(carver.rowIds, ElementsAre(1));
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
        Carver carver({makePattern("[0];[" + type + "];[-25]")});
        Buffer data{0, static_cast<std::uint8_t>(serialType), 41};
        data = data + bytes + Buffer(14, ' ');
        carver.ParseHeaderAndData(data, 0);
        ASSERT_EQ(carver.rowIds.size(), 1u) << type;
        std::vector<OptionalColumnValue> seen;
        for (const auto& [column, value] : carver.columns) {
            if (column == 1) seen.push_back(value);
        }
        EXPECT_EQ(seen, values) << type;
    }
}

TEST(RecordLoopTest, ValuesThatAreNotWhollyInsideTakeNoRoom) {
    // 8 bytes of data: 6 for a number leave no room for 8, nor for a blob of 8.
    const Buffer data = Buffer{0, 5, 6, 28, 15, 33, 13, 28, 9} + Buffer(8, 'x');
    Carver carver({makePattern("[0];[5];[6];[28];[15];[33];[13];[28];[9]")});
    carver.ParseHeaderAndData(data, 0);
    const std::int64_t six = 0x787878787878;
    // A text that runs past the end is cut, one that begins there is empty.
    EXPECT_THAT(carver.columns,
                ElementsAre(Carver::Column{1, six}, Carver::Column{4, "x"}, Carver::Column{5, "x"},
                            Carver::Column{6, ""}, Carver::Column{8, std::int64_t{1}}));
    EXPECT_EQ(carver.offsets.size(), 1u);
}

TEST(RecordLoopTest, HugeTextsEndTheRegion) {
    Buffer data{0};
    for (int i = 0; i < 3; ++i) {
        data = data + Buffer{0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    }
    data = data + Buffer(20, 'x');
    Carver carver({makePattern("[0];[-1];[-1];[-1]")});
    carver.ParseHeaderAndData(data, 0);
    EXPECT_EQ(carver.offsets.size(), 1u);
    EXPECT_THAT(carver.columns, ElementsAre(Carver::Column{1, std::string(20, 'x')},
                                            Carver::Column{2, ""}, Carver::Column{3, ""}));
}

TEST(RecordLoopTest, SmallRegionsAndTheBoundOfTheLoop) {
    Carver carver({makePattern("[0]")});
    carver.ParseHeaderAndData(Buffer(15, 0), 0);
    EXPECT_EQ(carver.offsets.size(), 0u);
    // The pattern fits everywhere; the last byte is no place where a search begins.
    carver.ParseHeaderAndData(Buffer(16, 0), 0);
    EXPECT_EQ(carver.offsets.size(), 15u);
    carver.ParseHeaderAndData(Buffer(16, 0), 15);
    EXPECT_EQ(carver.offsets.size(), 15u);
}

TEST(RecordLoopTest, FirstCarvingOfARowIdWins) {
    Buffer cell{5, 3, 0, 8};  // row id 5, one column with the constant 0
    Carver carver({makePattern("[1];[0];[0];[8]")});
    carver.keep = true;
    Buffer zero = cell;
    zero[0] = 0;
    const Buffer data = cell + zero + cell + zero + Buffer(20, 7);
    carver.ParseHeaderAndData(data, 0);
    EXPECT_THAT(carver.rowIds, ElementsAre(5, 1));  // a row id of 0 counts as 1
    // A list handed over from outside takes the place of the carver's own.
    auto other = std::make_shared<baseRecoveryObject>();
    other->RowId = 1;
    carver.RecoveredData = {other};
    carver.rowIds.clear();
    carver.ParseHeaderAndData(data, 0);
    EXPECT_THAT(carver.rowIds, ElementsAre(5));
}

/// Two mapped texts of 12 bytes each. `rule` is asked once per text.
struct CorrectionTest : ::testing::Test {
    Carver carver{{makePattern("[0];[37];[37]", {{"a", 1}, {"b", 2}})}};
    std::vector<std::int32_t> answers;
    std::size_t asked = 0;
    Buffer record = Buffer{0, 37, 37} + bytesOf("abcdefghijklmnopqrstuvwx");

    void SetUp() override {
        carver.position = [this](Bytes) {
            return asked < answers.size() ? answers[asked++] : -100;
        };
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const auto& one : carver.columns) result.push_back(std::get<std::string>(*one.value));
        return result;
    }
};

TEST_F(CorrectionTest, WholeTextIsReadAgainWithoutBeingAsked) {
    answers = {2};
    carver.ParseHeaderAndData(record + Buffer(20, 7), 0);
    // The second reading clears everything at its first text, yet keeps its own data start.
    EXPECT_THAT(texts(), ElementsAre("abcdefghijkl", "cdefghijklmn", "opqrstuvwx\7\7"));
    EXPECT_EQ(asked, 1u);
    EXPECT_EQ(carver._dataOffset, 0);
    EXPECT_FALSE(carver._dataReposition || carver._dontAttemptAgain);
    EXPECT_EQ(carver.offsets.size(), 1u);
}

TEST_F(CorrectionTest, SecondReadingIsFinal) {
    answers = {2, 3};
    carver.ParseHeaderAndData(record + Buffer(20, 7), 0);
    EXPECT_EQ(texts().size(), 3u);
    EXPECT_EQ(asked, 2u);
    EXPECT_EQ(carver._dataOffset, 0);
    EXPECT_EQ(carver.offsets.size(), 1u);
}

TEST_F(CorrectionTest, AppliesBothEndsOfTheRangeOnly) {
    const struct {
        std::int32_t answer;
        std::size_t texts;
    } cases[] = {{-7, 2}, {-3, 3}, {6, 3}, {7, 2}, {0, 2}, {-100, 2}};
    for (const auto& [answer, count] : cases) {
        carver.columns.clear();
        asked = 0;
        answers = {answer};
        carver.ParseHeaderAndData(record + Buffer(20, 7), 0);
        EXPECT_EQ(texts().size(), count) << answer;
    }
}

TEST_F(CorrectionTest, CutOffTextIsAskedAgainInItsSecondReading) {
    // 25 bytes are declared, 14 are there.
    const Buffer data = Buffer{0, 63} + Buffer(14, 'y');
    carver.tablePatterns = {makePattern("[0];[63]")};
    answers = {1, 3};
    carver.ParseHeaderAndData(data, 0);
    EXPECT_EQ(asked, 2u);
    EXPECT_EQ(carver.offsets.size(), 1u);
    EXPECT_TRUE(carver._dontAttemptAgain);
    EXPECT_FALSE(carver._dataReposition);
    EXPECT_EQ(carver._dataOffset, 0);

    // A region too small to be searched leaves the mark, any other clears it at its start.
    carver.ParseHeaderAndData(Buffer(15, 0), 0);
    EXPECT_TRUE(carver._dontAttemptAgain);
    answers = {1, 3, 0};
    carver.ParseHeaderAndData(data, 0);
    EXPECT_EQ(asked, 3u);
    EXPECT_FALSE(carver._dontAttemptAgain);
}

TEST_F(CorrectionTest, NextTextFindsTheMarkAndClearsIt) {
    carver.tablePatterns = {makePattern("[0];[63];[63]")};
    answers = {1, 3, 5};
    carver.ParseHeaderAndData(Buffer{0, 63, 63} + Buffer(14, 'y'), 0);
    EXPECT_EQ(asked, 2u);
    EXPECT_FALSE(carver._dontAttemptAgain);
    EXPECT_EQ(carver.offsets.size(), 1u);
}

TEST_F(CorrectionTest, CorrectionStaysInForceUntilATextClearsIt) {
    const Buffer data = Buffer{0, 63} + Buffer(14, 'y');
    carver.tablePatterns = {makePattern("[0];[63]")};
    answers = {2, 0};
    carver.ParseHeaderAndData(data, 0);
    EXPECT_EQ(carver._dataOffset, 2);
    answers = {};
    carver.columns.clear();
    carver.ParseHeaderAndData(data, 0);
    EXPECT_THAT(texts(), ElementsAre(std::string(12, 'y')));
    EXPECT_EQ(carver._dataOffset, 2);
}

TEST_F(CorrectionTest, RereadWithoutOpinionRepeatsItsStateAndEndsTheRegion) {
    carver.tablePatterns = {makePattern("[0];[63]")};
    answers = {1, -100};
    EXPECT_EQ(carver.ParseHeaderAndData(Buffer{0, 63} + Buffer(14, 'y'), 0), RegionEnd::Done);
    EXPECT_EQ(texts().size(), 2u);
    EXPECT_THAT(carver.offsets, IsEmpty());
    EXPECT_TRUE(carver._dataReposition);
}

TEST_F(CorrectionTest, BackwardCorrections) {
    // A text that would begin before the data ends the region, other columns are just not there.
    answers = {-6};
    EXPECT_EQ(carver.ParseHeaderAndData(record + Buffer(20, 7), 0), RegionEnd::ReadFailed);
    EXPECT_THAT(carver.offsets, IsEmpty());
    EXPECT_EQ(carver._dataOffset, -6);

    // The loop is led back to an offset in the same state and ends there.
    carver.tablePatterns = {makePattern("[0];[8]")};
    carver._dataOffset = -3;
    carver._dataReposition = false;
    Buffer data(40, 7);
    data[5] = 8;
    EXPECT_EQ(carver.ParseHeaderAndData(data, 0), RegionEnd::Done);
    EXPECT_EQ(carver.offsets.size(), 2u);
}

TEST(DataPositionTest, LooksForTheFirstDashOfOneField) {
    NotingCarver<AbstractSQLiteRecoveryFullSearch> carver({});
    const struct {
        Text field;
        const char* text;
        std::int32_t correction;
    } cases[] = {
        {"ZStandZAid", "0123456789-1-", 0}, {"ZStandZAid", "0123456789ab-", 2},
        {"ZStandZAid", "-", -10},           {"ZStandZAid", "", -11},
        {"ZStandZAid", "none", -11},        {"guid", "0123456789ab-", -100},
        {std::nullopt, "-", -100},          {"zStandZAid", "-", -100},
    };
    for (const auto& [field, text, correction] : cases) {
        carver._field = field;
        EXPECT_EQ(carver.verifyDataPosition(bytesOf(text)), correction) << text;
    }
    NotingCarver<> plain({});
    plain._field = "ZStandZAid";
    EXPECT_EQ(plain.verifyDataPosition(bytesOf("0123456789ab-")), -100);
}

}  // namespace
}  // namespace salvor::testing
