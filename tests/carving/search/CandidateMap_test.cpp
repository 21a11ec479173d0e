#include "carving/search/CandidateMap.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "carving/format/SQLiteUtils.h"

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
    std::vector<Content> contents{
        {"few bytes", {0, 4, 8, 9, 85}},
        {"texts and rows", {0, 1, 4, 9, 32, 85, 97, 110, 128, 129, 200}},
        {"long varints", {1, 2, 128, 129, 200, 255}},
        {"rare in plenty", std::vector<int>(53, 97)},
    };
    for (const int rare : {4, 200, 0}) contents.back().bytes.push_back(rare);
    std::mt19937 random(20260101);
    std::size_t turnedDown = 0;
    for (int round = 0; round < 2000; ++round) {
        const Content& content = contents[random() % std::size(contents)];
        std::vector<std::uint8_t> region(random() % 700);
        for (auto& byte : region)
            byte = static_cast<std::uint8_t>(content.bytes[random() % content.bytes.size()]);
        const LeadingColumns columns = randomColumns(random, content);
        ByteSets sets;
        LeadingSets numbers{};
        for (std::size_t k = 0; k < numbers.size(); ++k) numbers[k] = sets.add(columns.mayBegin[k]);
        for (const MaskMethod method : {MaskMethod::Plain, fastestMaskMethod()}) {
            RegionMasks masks;
            masks.find(method, ByteSearch(columns.rarest()), sets, region);
            CandidateMap map;
            map.build(numbers, true, masks);
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

TEST(ByteSetsTest, EveryMethodGivesTheSameMasks) {
    std::mt19937 random(7);
    std::array<std::bitset<256>, 5> wanted;
    ByteSets sets;
    for (std::size_t k = 0; k < wanted.size(); ++k) {
        // One of them lies in the lower half alone.
        const std::size_t end = k == 2 ? 128 : 256;
        for (std::size_t byte = 0; byte < end; ++byte) wanted[k][byte] = random() % 3 == 0;
        ASSERT_EQ(sets.add(wanted[k]), k);
    }
    EXPECT_EQ(sets.add(wanted[3]), 3U) << "an equal set is the same one";
    std::vector<std::uint8_t> data(64 * 40);
    for (auto& byte : data) byte = static_cast<std::uint8_t>(random());
    for (const MaskMethod method : {MaskMethod::Plain, fastestMaskMethod()}) {
        std::vector<std::uint64_t> masks(40 * sets.words());
        sets.masks(method, data, masks);
        for (std::size_t i = 0; i < data.size(); ++i) {
            const auto bit = [&](std::size_t word) {
                return (masks[i / 64 * sets.words() + word] >> (i % 64) & 1U) != 0;
            };
            for (std::size_t k = 0; k < wanted.size(); ++k) ASSERT_EQ(bit(k), wanted[k][data[i]]);
            ASSERT_EQ(bit(wanted.size()), data[i] >= 128);
        }
    }
}

}  // namespace
}  // namespace salvor
