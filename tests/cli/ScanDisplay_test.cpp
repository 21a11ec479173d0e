#include "cli/ScanDisplay.h"

#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "cli/Log.h"

namespace salvor::cli {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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
    display.onStatus(0, "SMS");
    display.onStatus(3, "12 SMS Retreived");
    display.onStatus(2, "");
    display.finish();
    EXPECT_EQ(buffer_.str(), "SMS\n12 SMS Retreived\n");
}

TEST_F(ScanDisplayTest, RedrawsOneLineInPlace) {
    console_.redraws = true;
    console_.width = [] { return 40; };
    progress_.bytesTotal = 200;
    progress_.bytesDone = 50;
    ScanDisplay display(console_, {});
    display.onStatus(0, "SMS");
    display.start(progress_);
    buffer_.redrawn.get_future().wait();
    display.onStatus(3, "12 SMS\x1b Retreived");
    display.finish();
    const auto written = buffer_.str();
    EXPECT_THAT(written, StartsWith("\r50 bytes of 200 bytes  0 deleted found\x1b[K"));
    // Texts stand above the line, which is gone in the end.
    EXPECT_THAT(written, HasSubstr("\r\x1b[K12 SMS\uFFFD Retreived\n"));
    EXPECT_THAT(written, Not(HasSubstr("\nSMS")));
    EXPECT_TRUE(written.ends_with("\n") || written.ends_with("\r\x1b[K")) << written;
}

TEST_F(ScanDisplayTest, QuietMeansNothing) {
    console_.redraws = true;
    ScanDisplay display(console_, {.texts = false, .line = false});
    display.setLog(makeLog(spdlog::level::err, [&](auto line) { display.writeLine(line); }));
    display.start(progress_);
    display.onStatus(3, "12 SMS Retreived");
    display.onWarning("something");
    display.finish();
    EXPECT_EQ(buffer_.str(), "");
}

TEST_F(ScanDisplayTest, WarningsAreLogLines) {
    ScanDisplay display(console_, {});
    display.setLog(makeLog(spdlog::level::warn, [&](auto line) { display.writeLine(line); }));
    display.onWarning("sms.db: cannot be read");
    EXPECT_EQ(buffer_.str(), "salvor: warning: sms.db: cannot be read\n");
}

TEST(LogTest, KnowsItsLevels) {
    EXPECT_EQ(logLevel("warning"), spdlog::level::warn);
    EXPECT_EQ(logLevel("off"), spdlog::level::off);
    EXPECT_EQ(logLevel("loud"), std::nullopt);
}

}  // namespace
}  // namespace salvor::cli
