#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace salvor {

struct RunBounds {
    std::chrono::seconds time;  ///< on the wall clock
    std::uint64_t memory;       ///< resident bytes
};

struct BoundedRun {
    /// How it failed: out of its bounds (and then killed), ended by a signal, by a sanitizer or
    /// with failed expectations. Empty when it did not.
    std::string failure;
    std::uint64_t memory = 0;  ///< most resident bytes, those of the caller at its start included
    std::chrono::milliseconds time{};
};

/// Runs `work` in a child process, whose expectations count and print, so that what hangs, crashes
/// or swallows memory fails the test instead of ending it. The child ends by std::exit: leaks are
/// told. Throws std::system_error when there is no child. Call it while no other thread runs.
BoundedRun runBounded(const RunBounds& bounds, const std::function<void()>& work);

}  // namespace salvor
