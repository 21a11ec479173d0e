#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "device/ChildProcess.h"

namespace salvor {

/// How far a helper is, as it tells.
struct HelperProgress {
    int percent = -1;  ///< -1 when it does not tell
    std::string line;  ///< what it wrote last, at most `kMaxLine` bytes
    static constexpr std::size_t kMaxLine = 512;
};

/// How a helper ended.
struct HelperResult {
    std::string startFailure;  ///< why it could not be started, or ""
    std::optional<int> exitStatus;
    std::optional<int> signal;
    bool cancelled = false;
    /// What it wrote that tells most of how it ended: an error's words, else its last line.
    std::string usefulLine;
};

/// Runs a helper (one writes a backup, another pairs) and reads what it writes on a thread of its
/// own until it ends; of a flood one line of each pipe is kept. Both callbacks come on
/// that thread, progress at most ten times a second. Destroying the object, or `cancel`, ends the
/// helper: first asked, after two seconds made to.
class HelperTask {
  public:
    HelperTask(std::vector<std::string> words, std::function<void(const HelperProgress&)> progress,
               std::function<void(const HelperResult&)> ended);
    void cancel() { thread_.request_stop(); }

  private:
    std::jthread thread_;
};

}  // namespace salvor
