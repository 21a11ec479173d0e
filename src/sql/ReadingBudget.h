#pragma once

#include <chrono>
#include <cstdint>

#include "sql/SqliteMemory.h"

namespace salvor {

/// What one statement may still spend, counted over all its steps.
struct StatementBudget {
    std::uint64_t ticks = 0;  ///< calls of the progress handler
};

/// What all statements of one connection may spend together, by the size of its file: steps of
/// SQLite's virtual machine, time, SQLite's memory, and room for the rows that are handed out. No
/// file of a device comes near: it is read a few times over, and its rows take no more room than a
/// small multiple of what they take in the file. A file that is made to multiply its rows, its
/// values or its statements spends it, and what is read until then stays. Not thread-safe.
class ReadingBudget {
  public:
    ReadingBudget() = default;  ///< unbounded
    explicit ReadingBudget(std::uint64_t fileSize);

    static constexpr int kOpcodesPerTick = 1000;

    /// For a further statement, whose preparation it charges.
    StatementBudget statement();
    /// Whether anything is left; else `spent` tells what is not.
    bool mayRun();
    /// Charges one call of the progress handler to the connection and to `running`; false when
    /// nothing is left.
    bool tick(StatementBudget& running);
    /// Charges a row that takes so many bytes; false when there is no room for it.
    bool handOut(std::uint64_t bytes);
    std::uint64_t room() const { return room_; }

    /// Charges what SQLite does on this thread while the object lives.
    class Running {
      public:
        explicit Running(ReadingBudget& budget);
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        ~Running();

      private:
        ReadingBudget& budget_;
        MemoryCharge memory_;
    };

    /// What was spent when a statement was ended; null when none was.
    const char* spent() const;

  private:
    using Clock = std::chrono::steady_clock;

    std::uint64_t ticks_ = UINT64_MAX;
    std::uint64_t baseTicks_ = UINT64_MAX;
    std::uint64_t sizeTicks_ = 0;
    std::uint64_t room_ = UINT64_MAX;
    Clock::duration time_ = Clock::duration::max();
    Clock::time_point started_{};
    SqliteMemory memory_;
    const char* spent_ = nullptr;
};

}  // namespace salvor
