#include "carving/format/SQLiteUtils.h"

#include <gtest/gtest.h>

#include "carving/format/PointerMapPage.h"
#include "carving/format/SQLiteHeader.h"
#include "tests/carving/CarvingFixture.h"

namespace salvor::testing {
namespace {

TEST(SQLiteUtilsTest, VarintNeedsNineBytesHoweverShortItIs) {
    const Buffer bytes(12, 0x05);
    EXPECT_TRUE(SQLiteUtils::convertVarintToIntfromByteArray(bytes, 3));
    for (const std::size_t index : {4u, 7u, 11u, 12u, 13u}) {
        EXPECT_FALSE(SQLiteUtils::convertVarintToIntfromByteArray(bytes, index)) << index;
    }
    EXPECT_FALSE(SQLiteUtils::convertVarintToIntfromByteArray(bytes, SIZE_MAX - 2));
}

TEST(SQLiteUtilsTest, BitTestSeesTheLowestEightBitsOnly) {
    const SQLiteUtils utils;
    EXPECT_TRUE(utils.isBitSet(0x80, 7));
    EXPECT_TRUE(utils.isBitSet(1, 32));
    EXPECT_FALSE(utils.isBitSet(0x100, 8));
    EXPECT_FALSE(utils.isBitSet(2, 0));
    EXPECT_EQ(SQLiteUtils::reverseData(Buffer{1, 2, 3}), (Buffer{3, 2, 1}));
    EXPECT_TRUE(SQLiteUtils::IsOdd(-3));
    EXPECT_TRUE(SQLiteUtils::IsEven(INT64_MIN));
}

TEST(SQLiteHeaderTest, TakesFieldsAsTheyStand) {
    FileImage image(1, 100);
    image.largestRootPage(0xFFFFFFFF);
    image.trunkPage(0x80000000);
    const auto header = SQLiteHeader::fromBytes(image.bytes);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->PageSize, 1);
    EXPECT_EQ(header->HighestNUmberedRootPageNumber, -1);
    EXPECT_FALSE(header->IsAutoVacuum);
    EXPECT_EQ(header->PageNumberOfFirstListTrunkPage, INT32_MIN);
    EXPECT_FALSE(header->Signature);  // holds bytes that are not ASCII
    image.largestRootPage(3);
    image.trunkPage(0);
    put16(image.bytes, 16, 65535);
    put32(image.bytes, 28, 65537);
    const auto wide = SQLiteHeader::fromBytes(image.bytes);
    EXPECT_TRUE(wide->IsAutoVacuum);
    EXPECT_EQ(wide->SQLiteDatabaseSizeInBytes(), -1);  // wraps at 32 bits
    EXPECT_FALSE(SQLiteHeader::fromBytes(Bytes(image.bytes).first(55)));
    EXPECT_FALSE(SQLiteHeader::initWithDatabasePath("/nowhere/at-all.db"));
}

TEST(PointerMapPageTest, EndsAtTheFirstForeignType) {
    Buffer page(23, 0);
    for (const std::size_t entry : {0u, 5u, 10u, 15u}) page[entry] = 5;
    EXPECT_EQ(PointerMapPage::read(2, page).pointerMaps.size(), 3u);  // the fourth never counts
    EXPECT_TRUE(PointerMapPage::read(2, page).full);
    page[10] = 6;
    const auto cut = PointerMapPage::read(2, page);
    EXPECT_EQ(cut.pointerMaps.size(), 2u);
    EXPECT_FALSE(cut.full);
    for (const std::size_t size : {0u, 1u, 9u}) {
        EXPECT_TRUE(PointerMapPage::read(2, Bytes(page).first(size)).pointerMaps.empty());
    }
}

}  // namespace
}  // namespace salvor::testing
