#include "carving/search/PatternMatcher.h"

#include <gtest/gtest.h>
#include <vector>

#include "carving/search/PatternFamily.h"
#include "tests/support/Signatures.h"

namespace salvor {
namespace {

class PatternMatcherTest : public ::testing::Test {
  protected:
    void search(const TablePatterns& patterns, Bytes region) {
        matcher_.use(patterns);
        matcher_.begin(region);
    }
    /// Where a header was found, or -1.
    std::int64_t positionFrom(std::int64_t offset) {
        SQLiteTableHeaderInfo found;
        if (matcher_.find(offset, found) != MatchResult::Found) return -1;
        EXPECT_EQ(found.tablePattern->headerPattern, expected_);
        return found.HeaderStartIndex;
    }

    PatternMatcher matcher_;
    std::string expected_;
};

TEST_F(PatternMatcherTest, FindsEveryHeaderWhereMoreFitThanAreRemembered) {
    // The first of two that begin alike fits nowhere; the second wherever there is room for it.
    const std::string begin = "[0];[0];[0];[0];[0];";
    const std::string zeros = "[0];[0];[0];[0];[0];[0];[0];[0];[0];[0]";
    expected_ = begin + "[0];" + zeros;
    const std::vector<std::uint8_t> region(3 * PatternFamily::kMostHits);
    search({makePattern(begin + "[9];" + zeros), makePattern(expected_)}, region);
    const auto most = static_cast<std::int64_t>(PatternFamily::kMostHits);
    for (const std::int64_t offset : {2 * most, most + 1, 2 * most + 5, std::int64_t{0}, most - 1})
        EXPECT_EQ(positionFrom(offset), offset);
    for (std::int64_t offset = 0; offset < 2 * most; ++offset)
        ASSERT_EQ(positionFrom(offset), offset);
}

}  // namespace
}  // namespace salvor
