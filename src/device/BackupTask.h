#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "device/ChildProcess.h"

namespace salvor {

/// The program that writes a fresh backup of a device, and its arguments. In these "{udid}" stands
/// for the device's identifier, "{target}" for the same in lower case and "{folder}" for the
/// folder below which the backup goes.
struct BackupHelper {
    std::vector<std::string> words{"idevicebackup2", "--udid", "{udid}", "backup", "{folder}"};

    /// Words separated by blanks. Nothing when there is none.
    static std::optional<BackupHelper> parse(const std::string& text);
    std::vector<std::string> wordsFor(const std::string& udid,
                                      const std::filesystem::path& folder) const;
};

/// How far a fresh backup is, as its helper tells.
struct BackupProgress {
    int percent = -1;  ///< -1 when it does not tell
    std::string line;  ///< what it wrote last, at most `kMaxLine` bytes
    static constexpr std::size_t kMaxLine = 512;
};

/// How the helper ended.
struct BackupTaskResult {
    std::string startFailure;  ///< why it could not be started, or ""
    std::optional<int> exitStatus;
    std::optional<int> signal;
    bool cancelled = false;
    std::string lastError;  ///< the last line of its standard error, or of its output
};

/// Runs the helper and reads what it writes on a thread of its own until it ends; of a flood only
/// the last line of each pipe is kept. Both callbacks come on that thread, progress at most ten
/// times a second. Destroying the object, or `cancel`, ends the helper: first asked, after two
/// seconds made to.
class BackupTask {
  public:
    BackupTask(std::vector<std::string> words, std::function<void(const BackupProgress&)> progress,
               std::function<void(const BackupTaskResult&)> ended);
    void cancel() { thread_.request_stop(); }

  private:
    std::jthread thread_;
};

}  // namespace salvor
