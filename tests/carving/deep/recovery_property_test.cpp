// Databases of random schemas, layouts and deletions, whose cells tell by their bytes what is left
// of them: what is left comes back, and nothing else does.
#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/RecoveryTally.h"
#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

std::uint64_t rounds() {
    const char* asked = std::getenv("SALVOR_PROPERTY_ROUNDS");
    return asked == nullptr ? 60 : std::strtoull(asked, nullptr, 10);
}

TEST(RecoveryProperty, FindsWhatStandsAndNothingElse) {
    const TempFolder folder;
    RecoveryTally tally;
    for (std::uint64_t seed = 1; seed <= rounds(); ++seed) {
        const auto path = folder / "sample.db";
        const RecoverySample sample(path, seed);
        tally.add(sample, path);
    }
    EXPECT_GT(tally.whole.all(), 20 * rounds());
    EXPECT_GT(tally.headless.all(), 5 * rounds());
    EXPECT_GE(tally.recall(), 0.999) << tally.misses;
    EXPECT_GE(tally.precision(), 0.999) << tally.misses;
    EXPECT_EQ(tally.live, 0u);
    // A row id that is told is right nearly always: lost ones are left out, never made up.
    EXPECT_LE(tally.rowIds.wrong * 1000, tally.rowIds.all());
    const auto& certain = tally.confidence[static_cast<std::size_t>(deep::Confidence::Certain)];
    EXPECT_GE(static_cast<double>(certain.right), 0.999 * static_cast<double>(certain.all()));
    RecordProperty("whole", static_cast<int>(tally.whole.all()));
    RecordProperty("headless", static_cast<int>(tally.headless.all()));
}

}  // namespace
}  // namespace salvor
