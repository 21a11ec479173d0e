#pragma once

#include <atomic>

namespace salvor {

/// Whether a worker has ended. A waiter is woken as soon as the flag is set.
class FinishedFlag {
  public:
    bool isSet() const { return set_.load(std::memory_order_acquire); }
    void set() {
        set_.store(true, std::memory_order_release);
        set_.notify_all();
    }
    void clear() { set_.store(false, std::memory_order_release); }
    void wait() const { set_.wait(false, std::memory_order_acquire); }

  private:
    std::atomic<bool> set_{false};
};

}  // namespace salvor
