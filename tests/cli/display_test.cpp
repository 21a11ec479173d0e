#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "cli/DisplayText.h"
#include "cli/JsonText.h"
#include "cli/Log.h"
#include "cli/ProgressLine.h"
#include "cli/ScanDisplay.h"
#include "cli/TextTable.h"

namespace salvor::cli {
namespace {

using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const ProgressSnapshot kHalf{"Recovering", 120'000'000, 240'000'000, 1204, seconds(83)};

TEST(ProgressLineTest, LeavesOutWhatDoesNotFit) {
    const std::pair<std::size_t, const char*> cases[] = {
        {65, "Recovering  50 %  120.0 MB of 240.0 MB  1,204 deleted found  1:23"},
        {59, "Recovering  50 %  120.0 MB of 240.0 MB  1,204 deleted found"},
        {47, "50 %  120.0 MB of 240.0 MB  1,204 deleted found"},
        {29, "50 %  1,204 deleted found"},
        {19, "1,204 deleted found"},
        {18, "50 %"},
        {3, "50…"},
    };
    for (const auto& [width, line] : cases) EXPECT_EQ(progressLine(kHalf, width), line) << width;
}

TEST(ProgressLineTest, TellsTheSavingAsWorkOfItsOwn) {
    auto saving = kHalf;
    saving.step = "Exporting";
    saving.work = Work::Saving;
    saving.saved = {1204, 80'000, 3, 20};
    EXPECT_EQ(progressLine(saving, 80), "Exporting  1,204 of 80,000 rows  3 of 20 pictures  1:23");
    EXPECT_EQ(progressLine(saving, 29), "3 of 20 pictures");
    saving.saved.filesTotal = 0;
    EXPECT_EQ(progressLine(saving, 29), "1,204 of 80,000 rows");
}

TEST(ProgressLineTest, NeverPassesTheTotal) {
    auto grown = kHalf;
    grown.bytesDone = 999'000'000;
    EXPECT_TRUE(progressLine(grown, 80).starts_with("Recovering  100 %  240.0 MB of 240.0 MB  "));
    grown.bytesDone = 239'999'999;
    EXPECT_TRUE(progressLine(grown, 80).starts_with("Recovering  99 %  "));
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
    ProgressSnapshot backup{"Backing up: 12 %", 0, 0, 0, seconds(2), Work::BackingUp};
    EXPECT_EQ(progressLine(backup, 80), "Backing up: 12 %  0:02");
    EXPECT_EQ(progressLine(backup, 16), "Backing up: 12 %");
    EXPECT_EQ(progressLine(backup, 10), "Backing u…");
    backup.step.clear();
    EXPECT_EQ(progressLine(backup, 80), "0:02");
}

TEST(DisplayTextTest, HidesWhatATerminalWouldObey) {
    struct Case {
        std::string text;
        std::string shown;
    };
    const Case cases[] = {
        {"Zoë's 電話 🎉", "Zoë's 電話 🎉"},
        {"a\x1b[2Jb", "a\uFFFD[2Jb"},
        {std::string("a\0b\n", 4), "a\uFFFDb\uFFFD"},
        {"\u009b31m", "\uFFFD31m"},
        {"fdp\u202Etxt", "fdp\uFFFDtxt"},
        {"\xC0\x80\xED\xA0\x80\xF5", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"cut \xE9\x9B", "cut \uFFFD\uFFFD"},
    };
    for (const auto& [text, shown] : cases) EXPECT_EQ(printable(text), shown) << text;
}

TEST(DisplayTextTest, JsonEscapesTheSame) {
    EXPECT_EQ(jsonLine({{"\u009b", "fdp\u202Etxt \x7F ä"}}),
              "{\"\\u009b\":\"fdp\\u202etxt \\u007f ä\"}\n");
}

TEST(DisplayTextTest, CountsColumnsAndCutsAtCharacters) {
    const std::pair<const char*, std::size_t> widths[] = {
        {"abc", 3}, {"電話", 4}, {"e\u0301", 1}, {"🎉", 2}};
    for (const auto& [text, width] : widths) EXPECT_EQ(displayWidth(text), width) << text;
    const std::tuple<const char*, std::size_t, const char*> cuts[] = {{"電話番号", 8, "電話番号"},
                                                                      {"電話番号", 7, "電話番…"},
                                                                      {"電話番号", 6, "電話…"},
                                                                      {"abc", 1, "…"},
                                                                      {"abc", 0, ""}};
    for (const auto& [text, columns, shown] : cuts) EXPECT_EQ(fitted(text, columns), shown);
}

TEST(TextTableTest, AlignsWideNames) {
    using enum TextTable::Align;
    TextTable table({Left, Right, Left});
    table.add({"電話", "7", "x"});
    table.add({"Anna", "1204", "a\tb"});
    table.add({"Jo", "", ""});
    std::ostringstream out;
    table.write(out);
    EXPECT_EQ(out.str(), "電話     7  x\nAnna  1204  a\uFFFDb\nJo\n");
}

/// Tells when something has been drawn, so that tests need no clock.
class WatchedBuffer : public std::stringbuf {
  public:
    std::promise<void> redrawn;

  protected:
    int sync() override {
        if (!told_ && str().find('\r') != std::string::npos) {
            told_ = true;
            redrawn.set_value();
        }
        return 0;
    }

  private:
    bool told_ = false;
};

class ScanDisplayTest : public testing::Test {
  protected:
    WatchedBuffer buffer_;
    std::ostringstream out_;
    std::ostream err_{&buffer_};
    Console console_{out_, err_};
    ScanProgress progress_;
};

TEST_F(ScanDisplayTest, WritesPlainLinesOffATerminal) {
    ScanDisplay display(console_, {});
    display.start(progress_);
    display.onStatus(StatusCode::Running, "SMS");
    display.onStatus(StatusCode::Result, "12 SMS Retreived");
    display.onStatus(StatusCode::Clear, "");
    display.finish();
    EXPECT_EQ(buffer_.str(), "SMS\n12 SMS Retreived\n");
}

TEST_F(ScanDisplayTest, RedrawsOneLineInPlace) {
    console_.redraws = true;
    console_.width = [] { return 40; };
    progress_.bytesTotal = 200;
    progress_.bytesDone = 50;
    ScanDisplay display(console_, {});
    display.onStatus(StatusCode::Running, "SMS");
    display.start(progress_);
    buffer_.redrawn.get_future().wait();
    display.onStatus(StatusCode::Result, "12 SMS\x1b Retreived");
    display.finish();
    const auto written = buffer_.str();
    EXPECT_THAT(written, StartsWith("\r25 %  0 deleted found\x1b[K"));
    // Texts stand above the line, which is gone in the end.
    EXPECT_THAT(written, HasSubstr("\r\x1b[K12 SMS\uFFFD Retreived\n"));
    EXPECT_THAT(written, Not(HasSubstr("\nSMS")));
    EXPECT_TRUE(written.ends_with("\n") || written.ends_with("\r\x1b[K")) << written;
}

TEST_F(ScanDisplayTest, WarningsAreLogLinesAndQuietMeansErrorsAlone) {
    for (const bool quiet : {false, true}) {
        console_.redraws = quiet;
        ScanDisplay display(console_, {.texts = !quiet, .line = !quiet});
        display.setLog(makeLog(quiet ? spdlog::level::err : spdlog::level::warn,
                               [&](auto line) { display.writeLine(line); }));
        if (quiet) display.start(progress_);
        display.onWarning("sms.db: cannot be read");
        if (quiet) display.onStatus(StatusCode::Result, "12 SMS Retreived");
        display.onError("sms.db: \x1b");
        display.finish();
        EXPECT_EQ(buffer_.str(),
                  std::string(quiet ? "" : "salvor: warning: sms.db: cannot be read\n") +
                      "salvor: error: sms.db: \uFFFD\n");
        buffer_.str("");
    }
}

TEST_F(ScanDisplayTest, AReportKeepsItsLinesAndNothingElseMakesAny) {
    ScanDisplay display(console_, {});
    display.setLog(makeLog(spdlog::level::warn, [&](auto line) { display.writeLine(line); }));
    display.onReport("  Where: \n  Reason: \x1b[2J\n");
    display.onWarning("two\nlines");
    EXPECT_EQ(buffer_.str(),
              "salvor: warning: how the scan failed:\n  Where: \n  Reason: \uFFFD[2J\n"
              "salvor: warning: two\uFFFDlines\n");
}

TEST(LogTest, KnowsItsLevels) {
    EXPECT_EQ(logLevel("warning"), spdlog::level::warn);
    EXPECT_EQ(logLevel("off"), spdlog::level::off);
    EXPECT_EQ(logLevel("loud"), std::nullopt);
}

}  // namespace
}  // namespace salvor::cli
