#pragma once

#include <cstdint>

namespace salvor {

/// What SQLite holds for one connection and the most that it may hold, in bytes.
struct SqliteMemory {
    std::int64_t most = INT64_MAX;
    std::int64_t held = 0;
    bool refused = false;  ///< an allocation would have gone beyond `most`
};

/// While it lives, what SQLite allocates and frees on this thread is charged to `memory`. What
/// goes beyond `most` is not allocated, which ends the statement that asked for it.
class MemoryCharge {
  public:
    explicit MemoryCharge(SqliteMemory& memory);
    MemoryCharge(const MemoryCharge&) = delete;
    MemoryCharge& operator=(const MemoryCharge&) = delete;
    ~MemoryCharge();

  private:
    SqliteMemory* before_;
};

}  // namespace salvor
