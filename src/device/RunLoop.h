#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>

namespace salvor {

/// Brings work from any thread to the thread that runs the loop, in order.
class RunLoop {
  public:
    static constexpr std::size_t kMaxPending = 4096;

    void post(std::function<void()> work);
    /// The same for a sender that is not trusted: while `kMaxPending` pieces wait, what it sends
    /// is lost.
    void offer(std::function<void()> work);

    /// Runs what is posted until `stop` is called, and is back at once when nothing more can come:
    /// at the end of `limit` or when `ended` is stopped.
    void run(const std::stop_token& ended = {},
             std::optional<std::chrono::milliseconds> limit = std::nullopt);
    /// Ends `run` after the piece of work that calls it.
    void stop();

  private:
    void add(std::function<void()> work, std::size_t most);

    std::mutex mutex_;
    std::condition_variable_any wake_;
    std::deque<std::function<void()>> pending_;
    bool stopped_ = false;
};

}  // namespace salvor
