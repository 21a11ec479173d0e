#include "cli/Interrupts.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <thread>

namespace salvor::cli {
namespace {

TEST(InterruptsTest, TheFirstSignalCancelsAndOneThatComesLateDoesNothing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        std::promise<std::thread::id> cancelled;
        {
            const Interrupts interrupts([&] { cancelled.set_value(std::this_thread::get_id()); });
            EXPECT_FALSE(Interrupts::happened());
            std::raise(number);
            EXPECT_TRUE(Interrupts::happened());
            auto canceller = cancelled.get_future();
            ASSERT_EQ(canceller.wait_for(std::chrono::seconds(10)), std::future_status::ready);
            EXPECT_NE(canceller.get(), std::this_thread::get_id());
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

TEST(InterruptsDeathTest, TheSecondSignalEndsAtOnce) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto interruptTwice = [] {
        const Interrupts interrupts([] {});
        std::raise(SIGINT);
        std::raise(SIGINT);
    };
    EXPECT_EXIT(interruptTwice(), testing::ExitedWithCode(130), "");
}

}  // namespace
}  // namespace salvor::cli
