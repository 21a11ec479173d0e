#pragma once

#include <atomic>

namespace salvor {

/// Holds a list's lock flag while something is inserted.
class ListLock {
  public:
    explicit ListLock(std::atomic<bool>& flag) : flag_(flag) { flag_ = true; }
    ListLock(const ListLock&) = delete;
    ListLock& operator=(const ListLock&) = delete;
    ~ListLock() { flag_ = false; }

  private:
    std::atomic<bool>& flag_;
};

}  // namespace salvor
