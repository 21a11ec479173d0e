#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "cli/Console.h"
#include "cli/ProgressLine.h"
#include "scan/ScanObserver.h"
#include "scan/ScanState.h"

namespace spdlog {
class logger;
}

namespace salvor::cli {

/// Shows a running scan, and the saving of its results, on the console's error stream: status texts
/// as lines and, where a line can be redrawn, the progress below them. A thread of its own draws
/// about ten times a second from the scan's counters; the scan's threads only leave texts here.
class ScanDisplay : public ScanObserver {
  public:
    struct Wanted {
        bool texts = true;  ///< status texts
        bool line = true;   ///< the progress line, where it can be redrawn
    };

    ScanDisplay(Console& console, Wanted wanted)
        : console_(console), wanted_(wanted), redraws_(wanted.line && console.redraws) {}
    ~ScanDisplay() override;

    /// Begins to draw; `progress` outlives `finish`.
    void start(const ScanProgress& progress);
    /// Begins to draw again for work of its own after the scan, such as "Exporting".
    void startSaving(const std::string& step);
    void saved(const SavedSoFar& soFar);

    void onStatus(StatusCode code, const std::string& text) override;
    void onBackupProgress(int percent, const std::string& line) override;
    void onBackupComplete() override;
    void onWarning(const std::string& text) override;
    void onError(const std::string& text) override;
    void onReport(const std::string& lines) override;

    /// Writes a line of its own above the progress line.
    void writeLine(std::string_view line);
    /// Ends the drawing and removes the progress line; what comes later is written plainly.
    void finish();
    /// Warnings and log lines go here.
    void setLog(std::shared_ptr<spdlog::logger> log) { log_ = std::move(log); }

    std::chrono::milliseconds elapsed() const;

  private:
    void begin();
    void draw(std::stop_token ended);
    void drawOnce();
    void eraseLine();

    Console& console_;
    const ScanProgress* progress_ = nullptr;
    const Wanted wanted_;
    const bool redraws_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::shared_ptr<spdlog::logger> log_;
    std::mutex mutex_;  ///< guards the console and what follows
    std::condition_variable_any wake_;
    std::string step_;
    Work work_ = Work::Searching;
    SavedSoFar saved_;
    int tenthsTold_ = 0;  ///< of the backup, off a terminal
    std::string drawn_;
    std::jthread drawer_;
};

}  // namespace salvor::cli
