#include "device/BackupTask.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sstream>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "util/StringUtils.h"

namespace salvor {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kSlice{50};
constexpr std::chrono::milliseconds kBetweenReports{100};
constexpr std::chrono::seconds kGrace{2};
/// What is read of a pipe before the helper's end is looked at again.
constexpr int kReadsAtOnce = 16;

/// The number before the last "%" of the line, 0 to 100; -1 when there is none.
int percentIn(std::string_view line) {
    const auto end = line.rfind('%');
    if (end == std::string_view::npos || end == 0) return -1;
    auto begin = end;
    while (begin > 0 && end - begin < 3 && line[begin - 1] >= '0' && line[begin - 1] <= '9')
        --begin;
    if (begin == end) return -1;
    int value = 0;
    for (const char digit : line.substr(begin, end - begin)) value = value * 10 + (digit - '0');
    return std::min(value, 100);
}

/// The lines of one pipe, ended by a line feed or, where a line is drawn anew, a carriage return.
class LineReader {
  public:
    explicit LineReader(int fd) : fd_(fd) {}

    /// Reads what is there; `onLine` gets each whole line that is not empty. False at the end.
    template <class OnLine>
    bool read(OnLine onLine) {
        std::array<char, 4096> bytes;
        for (int turn = 0; turn < kReadsAtOnce; ++turn) {
            const auto count = ::read(fd_, bytes.data(), bytes.size());
            if (count == 0) open_ = false;
            if (count < 0 && errno != EAGAIN && errno != EINTR) open_ = false;
            if (count <= 0) break;
            for (const char c : std::string_view(bytes.data(), static_cast<std::size_t>(count)))
                take(c, onLine);
        }
        if (!open_) endLine(onLine);
        return open_;
    }
    bool open() const { return open_; }
    int fd() const { return open_ ? fd_ : -1; }
    const std::string& last() const { return last_; }

  private:
    template <class OnLine>
    void take(char c, OnLine& onLine) {
        if (c == '\n' || c == '\r') {
            endLine(onLine);
        } else if (line_.size() < BackupProgress::kMaxLine) {
            line_ += c;
        }
    }
    template <class OnLine>
    void endLine(OnLine& onLine) {
        if (line_.find_first_not_of(" \t") != std::string::npos) {
            onLine(line_);
            last_ = line_;
        }
        line_.clear();
    }

    int fd_;
    bool open_ = true;
    std::string line_;
    std::string last_;
};

/// One run of the helper, on the task's thread.
class Run {
  public:
    Run(const std::vector<std::string>& words, std::function<void(const BackupProgress&)> progress)
        : child_(words),
          progress_(std::move(progress)),
          output_(child_.output()),
          errors_(child_.errors()) {}

    BackupTaskResult toItsEnd(const std::stop_token& stop) {
        while (!child_.ended()) {
            end(stop);
            pollfd both[] = {{output_.fd(), POLLIN, 0}, {errors_.fd(), POLLIN, 0}};
            ::poll(both, std::size(both), static_cast<int>(kSlice.count()));
            readBoth();
        }
        readBoth();  // what it wrote last; a process that it left behind may hold the pipes open
        report(true);
        const auto ended = *child_.ended();
        const bool cancelled = stop.stop_requested();
        return {{},
                ended.exitStatus,
                ended.signal,
                cancelled,
                errors_.last().empty() ? output_.last() : errors_.last()};
    }

  private:
    void end(const std::stop_token& stop) {
        if (!stop.stop_requested()) return;
        const auto now = Clock::now();
        if (!asked_) {
            asked_ = now;
            child_.signal(SIGTERM);
        } else if (now - *asked_ > kGrace) {
            child_.signal(SIGKILL);
        }
    }

    void readBoth() {
        const auto take = [this](const std::string& line) {
            latest_.line = line;
            if (const int percent = percentIn(line); percent >= 0) latest_.percent = percent;
            fresh_ = true;
        };
        if (output_.open()) output_.read(take);
        if (errors_.open()) errors_.read(take);
        report(false);
    }

    void report(bool atOnce) {
        const auto now = Clock::now();
        if (!fresh_ || (!atOnce && now - reported_ < kBetweenReports)) return;
        fresh_ = false;
        reported_ = now;
        if (progress_) progress_(latest_);
    }

    ChildProcess child_;
    std::function<void(const BackupProgress&)> progress_;
    LineReader output_;
    LineReader errors_;
    BackupProgress latest_;
    bool fresh_ = false;
    Clock::time_point reported_{};
    std::optional<Clock::time_point> asked_;
};

}  // namespace

std::optional<BackupHelper> BackupHelper::parse(const std::string& text) {
    BackupHelper helper;
    helper.words.clear();
    std::istringstream words(text);
    for (std::string word; words >> word;) helper.words.push_back(word);
    return helper.words.empty() ? std::nullopt : std::optional(std::move(helper));
}

std::vector<std::string> BackupHelper::wordsFor(const std::string& udid,
                                                const std::filesystem::path& folder) const {
    const std::pair<const char*, std::string> values[] = {
        {"{udid}", udid},
        {"{target}", StringUtils::lowerCase(udid)},
        {"{folder}", folder.string()}};
    std::vector<std::string> result = words;
    for (auto& word : result) {
        for (const auto& [name, value] : values) {
            if (word == name) {
                word = value;
                break;
            }
        }
    }
    return result;
}

BackupTask::BackupTask(std::vector<std::string> words,
                       std::function<void(const BackupProgress&)> progress,
                       std::function<void(const BackupTaskResult&)> ended)
    : thread_([words = std::move(words), progress = std::move(progress),
               ended = std::move(ended)](const std::stop_token& stop) mutable {
          BackupTaskResult result;
          try {
              result = Run(words, std::move(progress)).toItsEnd(stop);
          } catch (const std::system_error& failure) {
              result.startFailure = failure.what();
          }
          ended(result);
      }) {}

}  // namespace salvor
