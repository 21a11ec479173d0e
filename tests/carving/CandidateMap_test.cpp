#include "carving/CandidateMap.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "carving/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::int64_t kSpan = SQLiteUtils::kVarintSpan;

/// Whether a header at `position` gets past the leading columns or a failing read, looked at byte
/// by byte: what the map must never turn down.
bool mayStand(const LeadingColumns& columns, Bytes region, std::int64_t position, bool rowId) {
    const auto size = static_cast<std::int64_t>(region.size());
    std::int64_t at = position;
    const auto skip = [&] { at += SQLiteUtils::decodeVarint(region.data() + at).position; };
    if (rowId) {
        if (at > size - kSpan) return true;
        skip();
        at += 2;
    } else {
        ++at;
    }
    for (const auto& mayBegin : columns.mayBegin) {
        if (at > size - kSpan) return true;
        if (!mayBegin[region[static_cast<std::size_t>(at)]]) return false;
        skip();
    }
    return true;
}

struct Content {
    const char* what;
    std::vector<int> bytes;  ///< what the region is made of
};

LeadingColumns randomColumns(std::mt19937& random, const Content& content) {
    LeadingColumns columns;
    for (auto& mayBegin : columns.mayBegin) {
        // From one byte to nearly all; text columns go on.
        const auto wanted = random() % 3;
        for (const int byte : content.bytes) {
            if (random() % 4 <= wanted) mayBegin.set(static_cast<std::size_t>(byte));
        }
        if (random() % 2 == 0) {
            for (std::size_t byte = 128; byte < 256; ++byte) mayBegin.set(byte);
        }
    }
    return columns;
}

// A position that the map turns down by mistake is a lost record; one too many costs time alone.
TEST(CandidateMapTest, NeverTurnsDownAPossiblePosition) {
    const Content contents[] = {
        {"few bytes", {0, 4, 8, 9, 85}},
        {"texts and rows", {0, 1, 4, 9, 32, 85, 97, 110, 128, 129, 200}},
        {"long varints", {1, 2, 128, 129, 200, 255}},
        {"rare in plenty",
         {97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97,  97, 97,
          97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97,  97, 97,
          97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 97, 4,  200, 0}},
    };
    std::mt19937 random(20260101);
    std::size_t turnedDown = 0;
    for (int round = 0; round < 2000; ++round) {
        const Content& content = contents[random() % std::size(contents)];
        std::vector<std::uint8_t> region(random() % 700);
        for (auto& byte : region)
            byte = static_cast<std::uint8_t>(content.bytes[random() % content.bytes.size()]);
        const LeadingColumns columns = randomColumns(random, content);
        const LeadingColumnTables tables(columns);
        for (const MaskMethod method : {MaskMethod::Plain, fastestMaskMethod()}) {
            RareBlocks blocks;
            blocks.find(method, ByteSearch(columns.rarest()), region);
            CandidateMap map;
            map.build(method, tables, true, blocks);
            for (std::int64_t p = 0; p < static_cast<std::int64_t>(region.size()); ++p) {
                for (const bool rowId : {false, true}) {
                    const bool kept = (rowId ? map.nextWithRowId(p) : map.nextPlain(p)) == p;
                    turnedDown += kept ? 0U : 1U;
                    if (kept || !mayStand(columns, region, p, rowId)) continue;
                    FAIL() << content.what << ", round " << round << ", position " << p << " of "
                           << region.size() << (rowId ? " with row id" : "");
                }
            }
        }
    }
    EXPECT_GT(turnedDown, 100000U);
}

TEST(LeadingColumnsTest, EveryMethodGivesTheSameMasks) {
    std::mt19937 random(7);
    LeadingColumns columns;
    for (auto& mayBegin : columns.mayBegin) {
        for (std::size_t byte = 0; byte < 256; ++byte) mayBegin[byte] = random() % 3 == 0;
    }
    std::vector<std::uint8_t> data(64 * 40);
    for (auto& byte : data) byte = static_cast<std::uint8_t>(random());
    std::vector<BlockMasks> plain(40);
    std::vector<BlockMasks> fast(40);
    const LeadingColumnTables tables(columns);
    tables.masks(MaskMethod::Plain, data, plain);
    tables.masks(fastestMaskMethod(), data, fast);
    for (std::size_t i = 0; i < data.size(); ++i) {
        const auto bit = [&](const std::uint64_t mask) { return (mask >> (i % 64) & 1U) != 0; };
        for (std::size_t k = 0; k < columns.mayBegin.size(); ++k) {
            ASSERT_EQ(bit(plain[i / 64].mayBegin[k]), columns.mayBegin[k][data[i]]);
            ASSERT_EQ(bit(fast[i / 64].mayBegin[k]), columns.mayBegin[k][data[i]]);
        }
        ASSERT_EQ(bit(plain[i / 64].goesOn), data[i] >= 128);
        ASSERT_EQ(bit(fast[i / 64].goesOn), data[i] >= 128);
    }
}

}  // namespace
}  // namespace salvor
