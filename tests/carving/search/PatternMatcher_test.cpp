#include "carving/search/PatternMatcher.h"

#include <chrono>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <vector>

#include "carving/search/PatternFamily.h"
#include "tests/support/BoundedRun.h"
#include "tests/support/Signatures.h"

namespace salvor {
namespace {

// The patterns themselves take a third of it; a sanitizer keeps freed memory and shadows the rest.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t kMostMemory = 1024ULL << 20U;
#else
constexpr std::uint64_t kMostMemory = 64ULL << 20U;
#endif

TEST(PatternMatcherTest, FindsEveryHeaderWhereMoreFitThanAreRemembered) {
    // The first of two that begin alike fits nowhere; the second wherever there is room for it.
    const std::string begin = "[0];[0];[0];[0];[0];";
    const std::string zeros = "[0];[0];[0];[0];[0];[0];[0];[0];[0];[0]";
    const std::vector<std::uint8_t> region(3 * PatternFamily::kMostHits);
    PatternMatcher matcher;
    matcher.use({makePattern(begin + "[9];" + zeros), makePattern(begin + "[0];" + zeros)});
    matcher.begin(region);
    const auto most = static_cast<std::int64_t>(PatternFamily::kMostHits);
    std::vector<std::int64_t> offsets{2 * most, most + 1, 2 * most + 5, 0, most - 1};
    for (std::int64_t offset = 0; offset < 2 * most; ++offset) offsets.push_back(offset);
    for (const auto offset : offsets) {
        SQLiteTableHeaderInfo found;
        ASSERT_EQ(matcher.find(offset, found), MatchResult::Found);
        ASSERT_EQ(found.HeaderStartIndex, offset);
        ASSERT_EQ(found.tablePattern->headerPattern, begin + "[0];" + zeros);
    }
}

TEST(PatternMatcherTest, TakesNoMoreMemoryForThousandsOfPatterns) {
    // No two columns accept the same, and only the last pattern fits anywhere. With fewer columns
    // the first would end the search by a read past the end.
    constexpr int kPatterns = 4000;
    const auto first = [](int column) { return 12 + column % 50; };
    const auto header = [&](int number, int end) {
        std::string text = "[0]";
        for (int column = 4 * number; column < 4 * number + 4; ++column)
            text += fmt::format(";[{},{},{}]", first(column), 62 + column / 50 % 50,
                                112 + column / 2500);
        return text + fmt::format(";[{}];[7];[7];[7];[7];[7];[7]", end);
    };
    TablePatterns patterns;
    for (int number = 0; number < kPatterns; ++number)
        patterns.push_back(makePattern(header(number, 10)));
    patterns.push_back(makePattern(header(kPatterns, 11)));
    std::vector<std::uint8_t> region(32768, 7);
    for (int k = 0; k < 4; ++k)
        region[5001 + static_cast<std::size_t>(k)] =
            static_cast<std::uint8_t>(first(4 * kPatterns + k));
    region[5005] = 11;
    const auto run = runBounded({std::chrono::seconds(120), kMostMemory}, [&] {
        PatternMatcher matcher;
        matcher.use(patterns);
        matcher.begin(region);
        SQLiteTableHeaderInfo found;
        ASSERT_EQ(matcher.find(0, found), MatchResult::Found);
        EXPECT_EQ(found.HeaderStartIndex, 5000);
    });
    EXPECT_EQ(run.failure, "");
}

}  // namespace
}  // namespace salvor
