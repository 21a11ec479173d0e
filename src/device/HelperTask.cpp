#include "device/HelperTask.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "device/HelperWords.h"

namespace salvor {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kSlice{50};
constexpr std::chrono::milliseconds kBetweenReports{100};
constexpr std::chrono::seconds kGrace{2};
/// What is read of a pipe before the helper's end is looked at again: more than it can hold.
constexpr int kReadsAtOnce = 64;

/// The lines of one pipe, ended by a line feed or, where a line is drawn anew, a carriage return.
class LineReader {
  public:
    using OnLine = std::function<void(const std::string&)>;
    LineReader(int fd, OnLine onLine) : fd_(fd), onLine_(std::move(onLine)) {}

    /// Reads what is there; `OnLine` gets each whole line that is not empty.
    void read() {
        std::array<char, 4096> bytes;
        for (int turn = 0; open_ && turn < kReadsAtOnce; ++turn) {
            const auto count = ::read(fd_, bytes.data(), bytes.size());
            if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
            open_ = count > 0;
            for (std::ptrdiff_t at = 0; at < count; ++at) take(bytes[static_cast<std::size_t>(at)]);
            if (!open_) endLine();
        }
    }
    /// Tells of a line that is not whole yet: its end may be long in coming.
    void tellPart() {
        if (!line_.empty() && line_ != part_) onLine_(part_ = line_);
    }
    /// What has been written is a whole line.
    void endLine() {
        if (line_.find_first_not_of(" \t") != std::string::npos) {
            if (line_ != part_) onLine_(line_);
            keep();
        }
        line_.clear();
        part_.clear();
    }
    /// -1 once the pipe has ended.
    int fd() const { return open_ ? fd_ : -1; }
    /// The line that tells most of a failure, of such the last one.
    const std::string& useful() const { return useful_; }
    int weight() const { return weight_; }

  private:
    void take(char c) {
        if (c == '\n' || c == '\r') {
            endLine();
        } else if (line_.size() < HelperProgress::kMaxLine) {
            line_ += c;
        }
    }
    void keep() {
        const int weight = tellsFailure(line_);
        if (weight < weight_) return;
        weight_ = weight;
        useful_ = line_;
    }

    int fd_;
    OnLine onLine_;
    bool open_ = true;
    std::string line_;
    std::string part_;  ///< what has been told of it before its end
    std::string useful_;
    int weight_ = 0;
};

/// One run of the helper, on the task's thread.
class Run {
  public:
    Run(const std::vector<std::string>& words, std::function<void(const HelperProgress&)> progress)
        : child_(words),
          progress_(std::move(progress)),
          output_(child_.output(), [this](const std::string& line) { take(line); }),
          errors_(child_.errors(), [this](const std::string& line) { take(line); }) {}
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() = default;

    HelperResult toItsEnd(const std::stop_token& stop) {
        while (!child_.ended()) {
            endWhenStopped(stop);
            pollfd both[] = {{output_.fd(), POLLIN, 0}, {errors_.fd(), POLLIN, 0}};
            const int ready = ::poll(both, std::size(both), static_cast<int>(kSlice.count()));
            if (ready == 0) tellParts();
            readBoth();
        }
        readBoth();  // what it wrote last; a process that it left behind may hold the pipes open
        output_.endLine();
        errors_.endLine();
        report(true);
        HelperResult result;
        result.exitStatus = child_.ended()->exitStatus;
        result.signal = child_.ended()->signal;
        result.cancelled = stop.stop_requested();
        const bool outputTells = errors_.useful().empty() || output_.weight() > errors_.weight();
        result.usefulLine = outputTells ? output_.useful() : errors_.useful();
        return result;
    }

  private:
    void endWhenStopped(const std::stop_token& stop) {
        if (!stop.stop_requested()) return;
        const auto now = Clock::now();
        if (!asked_) {
            asked_ = now;
            child_.signal(SIGTERM);
        } else if (now - *asked_ > kGrace) {
            child_.signal(SIGKILL);
        }
    }

    void tellParts() {
        output_.tellPart();
        errors_.tellPart();
    }

    void readBoth() {
        output_.read();
        errors_.read();
        report(false);
    }

    void take(const std::string& line) {
        latest_.line = line;
        if (const int percent = percentIn(line); percent >= 0) latest_.percent = percent;
        fresh_ = true;
    }

    void report(bool atOnce) {
        const auto now = Clock::now();
        if (!fresh_ || (!atOnce && now - reported_ < kBetweenReports)) return;
        fresh_ = false;
        reported_ = now;
        if (progress_) progress_(latest_);
    }

    ChildProcess child_;
    std::function<void(const HelperProgress&)> progress_;
    LineReader output_;
    LineReader errors_;
    HelperProgress latest_;
    bool fresh_ = false;
    Clock::time_point reported_{};
    std::optional<Clock::time_point> asked_;
};

}  // namespace

HelperTask::HelperTask(std::vector<std::string> words,
                       std::function<void(const HelperProgress&)> progress,
                       std::function<void(const HelperResult&)> ended)
    : thread_([words = std::move(words), progress = std::move(progress),
               ended = std::move(ended)](const std::stop_token& stop) mutable {
          HelperResult result;
          try {
              result = Run(words, std::move(progress)).toItsEnd(stop);
          } catch (const std::system_error& failure) {
              result.startFailure = failure.what();
          }
          ended(result);
      }) {}

}  // namespace salvor
