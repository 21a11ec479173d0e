#include "cli/ScanDisplay.h"

#include <algorithm>
#include <fmt/format.h>
#include <spdlog/logger.h>

#include "cli/DisplayText.h"
#include "cli/ProgressLine.h"

namespace salvor::cli {
namespace {

constexpr auto kFrame = std::chrono::milliseconds(100);

}  // namespace

void ScanDisplay::start(const ScanProgress& progress) {
    progress_ = &progress;
    begin();
}

void ScanDisplay::startSaving(const std::string& step) {
    {
        const std::lock_guard lock(mutex_);
        work_ = Work::Saving;
        step_ = step;
        saved_ = {};
    }
    if (wanted_.texts && !redraws_) writeLine(step);
    begin();
}

void ScanDisplay::saved(const SavedSoFar& soFar) {
    if (!redraws_) return;
    const std::lock_guard lock(mutex_);
    saved_ = soFar;
}

void ScanDisplay::begin() {
    if (redraws_) drawer_ = std::jthread([this](std::stop_token ended) { draw(std::move(ended)); });
}

ScanDisplay::~ScanDisplay() {
    finish();
}

void ScanDisplay::onStatus(StatusCode code, const std::string& text) {
    if (log_ != nullptr)
        log_->debug("status {} \"{}\" after {} ms", static_cast<int>(code), printable(text),
                    elapsed().count());
    if (code == StatusCode::Clear || text.empty()) return;
    {
        const std::lock_guard lock(mutex_);
        step_ = text;
    }
    // What only names the step stands in the progress line already.
    const bool shownInLine = redraws_ && code == StatusCode::Running;
    if (wanted_.texts && !shownInLine) writeLine(text);
}

void ScanDisplay::onBackupProgress(int percent, const std::string& line) {
    int tenths = 0;
    {
        const std::lock_guard lock(mutex_);
        work_ = Work::BackingUp;
        step_ = percent < 0 ? line : fmt::format("Backing up: {} %  {}", percent, line);
        tenths = percent / 10;
        if (percent < 0 && line.empty()) tenthsTold_ = 0;
        if (redraws_ || tenths <= tenthsTold_) return;
        tenthsTold_ = tenths;
    }
    if (wanted_.texts) writeLine(fmt::format("Backing up: {} %", tenths * 10));
}

void ScanDisplay::onBackupComplete() {
    const std::lock_guard lock(mutex_);
    work_ = Work::Searching;
    step_.clear();
}

void ScanDisplay::onWarning(const std::string& text) {
    if (log_ != nullptr) log_->warn("{}", printable(text));
}

void ScanDisplay::onError(const std::string& text) {
    // No log line: told at whatever level.
    writeLine("salvor: error: " + text);
}

void ScanDisplay::onReport(const std::string& lines) {
    if (log_ == nullptr) return;
    std::string shown;
    std::string_view rest = lines;
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        shown += '\n' + printable(rest.substr(0, end));
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    }
    log_->warn("how the scan failed:{}", shown);
}

void ScanDisplay::writeLine(std::string_view line) {
    const std::lock_guard lock(mutex_);
    eraseLine();
    console_.err << printable(line) << '\n' << std::flush;
}

void ScanDisplay::finish() {
    if (!drawer_.joinable()) return;
    drawer_.request_stop();
    drawer_.join();
    const std::lock_guard lock(mutex_);
    eraseLine();
    console_.err.flush();
}

std::chrono::milliseconds ScanDisplay::elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 begin_);
}

void ScanDisplay::draw(std::stop_token ended) {
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, ended, kFrame, [&ended] { return ended.stop_requested(); }))
        drawOnce();
}

void ScanDisplay::drawOnce() {
    ProgressSnapshot now;
    now.step = step_;
    now.work = work_;
    now.saved = saved_;
    if (progress_ != nullptr) {
        now.bytesDone = progress_->bytesDone;
        now.bytesTotal = progress_->bytesTotal;
        now.recordsFound = progress_->recordsFound;
    }
    now.elapsed = std::chrono::duration_cast<std::chrono::seconds>(elapsed());
    // The last column stays free: writing into it would move some terminals to the next line.
    const auto columns = static_cast<std::size_t>(std::max(console_.width(), 2) - 1);
    auto line = progressLine(now, columns);
    if (line == drawn_) return;
    console_.err << '\r' << line << "\x1b[K" << std::flush;
    drawn_ = std::move(line);
}

void ScanDisplay::eraseLine() {
    if (drawn_.empty()) return;
    console_.err << "\r\x1b[K";
    drawn_.clear();
}

}  // namespace salvor::cli
