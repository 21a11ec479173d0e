#include "sql/ReadingBudget.h"

#include <algorithm>

namespace salvor {
namespace {

// About a second of a hostile join. A whole-table read spends about one opcode per byte of file,
// so large files get their share on top.
constexpr std::uint64_t kBaseTicks = 100'000;
constexpr std::uint64_t kBytesPerTick = 250;
// After statements that ran out, the next ones get less, so that others still run beside them.
constexpr std::uint64_t kLeastBaseTicks = 1'000;
// A connection runs several statements, most of which read one table of the file.
constexpr std::uint64_t kStatementsWorth = 3;
constexpr std::uint64_t kReadings = 4;
// Preparing takes as long as a few thousand opcodes, and a file can ask for many statements.
constexpr std::uint64_t kTicksToPrepare = 5;

constexpr std::uint64_t kBaseRoom = std::uint64_t{12} << 20;
constexpr std::uint64_t kRoomPerByte = 5;
// SQLite sorts in memory, and what it sorts are rows of the file.
constexpr std::int64_t kBaseMemory = std::int64_t{12} << 20;
constexpr std::int64_t kMemoryPerByte = 2;

// On the wall clock, which the work beside it slows: a device's file needs a tenth.
constexpr std::chrono::seconds kBaseTime{5};
constexpr std::uint64_t kBytesPerSecond = 10 << 20;

constexpr auto kSteps = "reading it takes more steps than a file of its size explains";
constexpr auto kTime = "reading it takes more time than a file of its size explains";
constexpr auto kMemory = "reading it takes more memory than a file of its size explains";
constexpr auto kRoom = "its rows take more room than a file of its size explains";

}  // namespace

ReadingBudget::ReadingBudget(std::uint64_t fileSize)
    : ticks_(kStatementsWorth * kBaseTicks + kReadings * (fileSize / kBytesPerTick)),
      baseTicks_(kBaseTicks),
      sizeTicks_(fileSize / kBytesPerTick),
      room_(kBaseRoom + kRoomPerByte * fileSize),
      time_(kBaseTime + std::chrono::seconds(fileSize / kBytesPerSecond)) {
    memory_.most = kBaseMemory + kMemoryPerByte * static_cast<std::int64_t>(fileSize);
}

StatementBudget ReadingBudget::statement() {
    ticks_ -= std::min(ticks_, kTicksToPrepare);
    return {baseTicks_ + sizeTicks_};
}

bool ReadingBudget::mayRun() {
    if (ticks_ == 0)
        spent_ = kSteps;
    else if (time_ <= Clock::duration::zero())
        spent_ = kTime;
    else if (room_ == 0)
        spent_ = kRoom;
    else
        return true;
    return false;
}

bool ReadingBudget::tick(StatementBudget& running) {
    running.ticks -= std::min<std::uint64_t>(running.ticks, 1);
    ticks_ -= std::min<std::uint64_t>(ticks_, 1);
    if (running.ticks == 0) baseTicks_ = std::max(baseTicks_ / 2, kLeastBaseTicks);
    if (running.ticks == 0 || ticks_ == 0)
        spent_ = kSteps;
    else if (Clock::now() - started_ > time_)
        spent_ = kTime;
    else
        return true;
    return false;
}

bool ReadingBudget::handOut(std::uint64_t bytes) {
    if (bytes <= room_) {
        room_ -= bytes;
        return true;
    }
    room_ = 0;
    spent_ = kRoom;
    return false;
}

const char* ReadingBudget::spent() const {
    if (spent_ != nullptr || !memory_.refused) return spent_;
    return kMemory;
}

ReadingBudget::Running::Running(ReadingBudget& budget) : budget_(budget), memory_(budget.memory_) {
    budget_.spent_ = nullptr;
    budget_.memory_.refused = false;
    budget_.started_ = Clock::now();
}

ReadingBudget::Running::~Running() {
    budget_.time_ -= Clock::now() - budget_.started_;
}

}  // namespace salvor
