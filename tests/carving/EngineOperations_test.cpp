#include <gtest/gtest.h>
#include <limits>

#include "tests/carving/CarvingFixture.h"

namespace salvor::testing {
namespace {

TEST(EngineOperations, FindUuidsOnlyWithinTheBytes) {
    const std::string uuid = "01234567-89AB-cdef-xyz0-456789abcdef";
    constexpr auto kFar = std::numeric_limits<std::int64_t>::max();
    struct Case {
        std::string text;
        std::int64_t offset, found;
    };
    const std::vector<Case> cases{
        {"", 0, -1},
        {uuid, 0, 0},
        {uuid, 1, -1},
        {uuid, -1, 0},
        {uuid, std::numeric_limits<std::int64_t>::min(), 0},
        {uuid, kFar, -1},
        {uuid.substr(0, 35), 0, -1},
        {uuid.substr(1) + "0", 0, -1},
        {"-" + uuid + uuid, 0, 1},
        {"-" + uuid + uuid, 2, 37},
        {std::string(36, '-'), 0, -1},
        {std::string(36, '0'), 0, -1},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(AbstractSqLiteRecovery::FindIndexOfBytesForGuidDataContent(bytesOf(one.text),
                                                                             one.offset),
                  one.found)
            << one.text << " from " << one.offset;
    }
}

TEST(EngineOperations, SumTheHeaderThatAPatternLetsExpect) {
    const std::vector<std::pair<HeaderPattern, std::int32_t>> cases{
        {{}, 0},        {{{10}}, 1},          {{{11}}, 2},        {{{20, 3}}, 1},
        {{{}, {1}}, 1}, {{{13}, {}, {1}}, 5}, {{{1}, {}, {}}, 3},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(AbstractSqLiteRecovery::headerSize(cases[i].first), cases[i].second) << i;
}

TEST(EngineOperations, LookForAHeaderNoFartherThanAsked) {
    NotingCarver<AbstractSqLiteRecovery> carver({makePattern("[0]")});
    struct Case {
        std::size_t bytes;
        std::int64_t size, offset;
        bool begins;
        std::int64_t found;
    };
    // The pattern fits everywhere but at the last byte.
    for (const auto& [bytes, size, offset, begins, found] :
         {Case{0, 4, 0, false, 4}, Case{10, 4, 0, true, 0}, Case{10, 4, 3, true, 0},
          Case{10, 0, 3, false, 0}, Case{10, 4, 10, false, 4}, Case{10, 4, 1000, false, 4}}) {
        const Buffer data(bytes, 0);
        std::int64_t at = -7;
        EXPECT_EQ(carver.processContent(size, at, offset, data), begins) << bytes << ' ' << offset;
        EXPECT_EQ(at, found) << bytes << ' ' << offset;
    }
}

}  // namespace
}  // namespace salvor::testing
