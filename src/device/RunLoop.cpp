#include "device/RunLoop.h"

#include <limits>
#include <utility>

namespace salvor {

void RunLoop::post(std::function<void()> work) {
    add(std::move(work), std::numeric_limits<std::size_t>::max());
}

void RunLoop::offer(std::function<void()> work) {
    add(std::move(work), kMaxPending);
}

void RunLoop::add(std::function<void()> work, std::size_t most) {
    {
        const std::lock_guard lock(mutex_);
        if (pending_.size() >= most) return;
        pending_.push_back(std::move(work));
    }
    wake_.notify_all();
}

void RunLoop::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    wake_.notify_all();
}

void RunLoop::run(const std::stop_token& ended, std::optional<std::chrono::milliseconds> limit) {
    constexpr auto kForever = std::chrono::hours(24 * 365);
    const auto until =
        std::chrono::steady_clock::now() +
        limit.value_or(std::chrono::duration_cast<std::chrono::milliseconds>(kForever));
    std::unique_lock lock(mutex_);
    stopped_ = false;
    for (;;) {
        wake_.wait_until(lock, ended, until, [this] { return stopped_ || !pending_.empty(); });
        if (stopped_ || pending_.empty() || ended.stop_requested()) return;
        const auto work = std::move(pending_.front());
        pending_.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

}  // namespace salvor
