#include "tests/support/BoundedRun.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace salvor {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPause = std::chrono::milliseconds(5);

/// How many expectations failed in this test until now.
int failures() {
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

[[noreturn]] void runChild(const std::function<void()>& work) {
    const int before = failures();
    try {
        work();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "thrown: " << error.what();
    }
    std::exit(failures() == before ? 0 : 1);
}

/// What the process holds now; 0 once it has ended.
std::uint64_t residentBytes(pid_t process) {
    std::ifstream figures("/proc/" + std::to_string(process) + "/statm");
    std::uint64_t all = 0;
    std::uint64_t resident = 0;
    figures >> all >> resident;
    return resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

std::string howItEnded(int status) {
    if (WIFSIGNALED(status)) return "ended by signal " + std::to_string(WTERMSIG(status));
    if (WEXITSTATUS(status) != 0) return "ended with code " + std::to_string(WEXITSTATUS(status));
    return {};
}

std::string megabytes(std::uint64_t bytes) {
    return std::to_string(bytes >> 20U) + " MB";
}

}  // namespace

BoundedRun runBounded(const RunBounds& bounds, const std::function<void()>& work) {
    std::fflush(nullptr);  // what waits in a buffer would be written twice
    std::cout.flush();
    const auto begin = Clock::now();
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) runChild(work);

    BoundedRun run;
    int status = 0;
    rusage usage{};
    pid_t ended = 0;
    while ((ended = ::wait4(child, &status, WNOHANG, &usage)) == 0) {
        if (Clock::now() - begin > bounds.time)
            run.failure = "still running after " + std::to_string(bounds.time.count()) + " s";
        else if (residentBytes(child) > bounds.memory)
            run.failure = "holds more than " + megabytes(bounds.memory);
        if (!run.failure.empty()) {
            ::kill(child, SIGKILL);
            ended = ::wait4(child, &status, 0, &usage);
            break;
        }
        std::this_thread::sleep_for(kPause);
    }
    if (ended < 0) throw std::system_error(errno, std::generic_category(), "wait4");
    run.memory = static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
    run.time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    if (run.failure.empty()) run.failure = howItEnded(status);
    if (run.failure.empty() && run.memory > bounds.memory)
        run.failure = "held " + megabytes(run.memory);
    return run;
}

}  // namespace salvor
