#include "cli/ProgressLine.h"

#include <gtest/gtest.h>

#include "cli/DisplayText.h"

namespace salvor::cli {
namespace {

using std::chrono::seconds;

const ProgressSnapshot kHalf{"Recovering", 120'000'000, 240'000'000, 1204, seconds(83)};

TEST(ProgressLineTest, LeavesOutWhatDoesNotFit) {
    const std::pair<std::size_t, const char*> cases[] = {
        {66, "Recovering  120.0 MB of 240.0 MB  1,204 deleted found  1:23"},
        {58, "Recovering  120.0 MB of 240.0 MB  1,204 deleted found"},
        {45, "120.0 MB of 240.0 MB  1,204 deleted found"},
        {40, "1,204 deleted found"},
        {10, "1,204 del…"},
    };
    for (const auto& [width, line] : cases) EXPECT_EQ(progressLine(kHalf, width), line) << width;
}

TEST(ProgressLineTest, NeverExceedsTheWidth) {
    for (const char* step : {"", "Messages", "電話番号\x1b[2J とメッセージ"}) {
        for (std::size_t width = 0; width < 120; ++width) {
            const ProgressSnapshot progress{step, 999'949'999, 1'000'000'000, 12'345'678,
                                            seconds(36'000)};
            EXPECT_LE(displayWidth(progressLine(progress, width)), width) << step;
        }
    }
}

TEST(ProgressLineTest, ShowsWhatThereIsAndKeepsTheStepOfABackup) {
    EXPECT_EQ(progressLine({"SMS", 0, 0, 0, seconds(2)}, 80), "SMS  0 deleted found  0:02");
    ProgressSnapshot backup{"Backing up: 12 %", 0, 0, 0, seconds(2), false};
    EXPECT_EQ(progressLine(backup, 80), "Backing up: 12 %  0:02");
    EXPECT_EQ(progressLine(backup, 16), "Backing up: 12 %");
    EXPECT_EQ(progressLine(backup, 10), "Backing u…");
    backup.step.clear();
    EXPECT_EQ(progressLine(backup, 80), "0:02");
}

}  // namespace
}  // namespace salvor::cli
