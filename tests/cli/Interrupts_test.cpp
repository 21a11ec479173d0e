#include "cli/Interrupts.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>

namespace salvor::cli {
namespace {

TEST(InterruptsTest, TheFirstSignalCancelsAndOneThatComesLateDoesNothing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        std::promise<void> cancelled;
        {
            const Interrupts interrupts([&cancelled] { cancelled.set_value(); });
            EXPECT_FALSE(Interrupts::happened());
            std::raise(number);
            EXPECT_TRUE(Interrupts::happened());
            EXPECT_EQ(cancelled.get_future().wait_for(std::chrono::seconds(10)),
                      std::future_status::ready);
        }
        {
            const Interrupts nothingComes([] { FAIL(); });
        }
        std::raise(number);  // would end this program
    }
}

TEST(InterruptsTest, AHangupThatIsIgnoredStaysSo) {
    std::signal(SIGHUP, SIG_IGN);
    {
        const Interrupts interrupts([] { FAIL(); });
        std::raise(SIGHUP);
        EXPECT_FALSE(Interrupts::happened());
    }
    std::signal(SIGHUP, SIG_DFL);
}

}  // namespace
}  // namespace salvor::cli
