#include "carving/search/PatternMatcher.h"

#include <gtest/gtest.h>
#include <vector>

#include "carving/search/PatternFamily.h"
#include "tests/support/Signatures.h"

namespace salvor {
namespace {

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

}  // namespace
}  // namespace salvor
