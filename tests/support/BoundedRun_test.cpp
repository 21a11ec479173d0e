#include "tests/support/BoundedRun.h"

#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace salvor {
namespace {

constexpr RunBounds kBounds{std::chrono::seconds(60), 1ULL << 30U};

void fillMemory() {
    std::vector<std::vector<char>> held;
    while (true) held.emplace_back(1U << 24U, 'x');
}

struct Ending {
    const char* name;
    RunBounds bounds;
    void (*work)();
    const char* failure;
};

// A bound that nothing can break would prove nothing about the scans that run within it.
TEST(BoundedRuns, TellHowEachFails) {
    const std::vector<Ending> endings{
        {"in order", kBounds, [] {}, ""},
        {"hang",
         {std::chrono::seconds(1), kBounds.memory},
         [] { std::this_thread::sleep_for(std::chrono::hours(1)); },
         "still running after 1 s"},
        {"memory", {kBounds.time, 700ULL << 20U}, fillMemory, "holds more than 700 MB"},
        {"signal", kBounds, [] { ::raise(SIGKILL); }, "ended by signal 9"},
        {"exit", kBounds, [] { std::_Exit(3); }, "ended with code 3"},
        {"expectation", kBounds, [] { ADD_FAILURE() << "on purpose"; }, "ended with code 1"},
        {"exception", kBounds, [] { throw std::runtime_error("on purpose"); }, "ended with code 1"},
    };
    for (const auto& ending : endings) {
        SCOPED_TRACE(ending.name);
        const auto run = runBounded(ending.bounds, ending.work);
        EXPECT_EQ(run.failure, ending.failure);
        EXPECT_GT(run.memory, 0U);
    }
}

}  // namespace
}  // namespace salvor
