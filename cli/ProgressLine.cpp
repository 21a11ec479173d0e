#include "cli/ProgressLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <utility>
#include <vector>

#include "app/ScanSummary.h"
#include "cli/DisplayText.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

constexpr unsigned kStep = 1, kShare = 2, kMoved = 4, kFound = 8, kElapsed = 16;

// From the fullest line to the shortest.
constexpr std::array<unsigned, 6> kLayouts = {kStep | kShare | kMoved | kFound | kElapsed,
                                              kStep | kShare | kMoved | kFound,
                                              kShare | kMoved | kFound,
                                              kShare | kFound,
                                              kFound,
                                              kShare};

void addSearch(std::vector<std::string>& pieces, const ProgressSnapshot& progress,
               unsigned layout) {
    // A file that grew meanwhile does not make the search longer than it was said to be.
    const auto done = std::min(progress.bytesDone, progress.bytesTotal);
    if ((layout & kShare) != 0 && progress.bytesTotal > 0)
        pieces.push_back(
            fmt::format("{:.0f} %", std::floor(100 * static_cast<double>(done) /
                                               static_cast<double>(progress.bytesTotal))));
    if ((layout & kMoved) != 0 && progress.bytesTotal > 0)
        pieces.push_back(fmt::format("{} of {}", FileUtils::sizeText(done),
                                     FileUtils::sizeText(progress.bytesTotal)));
    if ((layout & kFound) != 0)
        pieces.push_back(fmt::format("{} deleted found", countText(progress.recordsFound)));
}

void addSaving(std::vector<std::string>& pieces, const SavedSoFar& saved, unsigned layout) {
    const auto moved = [&](std::uint64_t done, std::uint64_t total, const char* what) {
        if (total > 0)
            pieces.push_back(fmt::format("{} of {} {}", countText(done), countText(total), what));
    };
    if ((layout & kMoved) != 0) moved(saved.rowsDone, saved.rowsTotal, "rows");
    if ((layout & (kMoved | kFound)) != 0) moved(saved.filesDone, saved.filesTotal, "pictures");
}

std::string lineOf(const ProgressSnapshot& progress, unsigned layout) {
    std::vector<std::string> pieces;
    const auto seconds = progress.elapsed.count();
    if ((layout & kStep) != 0 && !progress.step.empty()) pieces.push_back(printable(progress.step));
    if (progress.work == Work::Searching) addSearch(pieces, progress, layout);
    if (progress.work == Work::Saving) addSaving(pieces, progress.saved, layout);
    if ((layout & kElapsed) != 0)
        pieces.push_back(fmt::format("{}:{:02}", seconds / 60, seconds % 60));
    return fmt::format("{}", fmt::join(pieces, "  "));
}

}  // namespace

std::string progressLine(const ProgressSnapshot& progress, std::size_t width) {
    std::string line;
    for (const unsigned layout : kLayouts) {
        auto shorter = lineOf(progress, layout);
        if (shorter.empty()) continue;  // a step that stands alone is cut instead
        line = std::move(shorter);
        if (displayWidth(line) <= width) return line;
    }
    return fitted(line, width);
}

}  // namespace salvor::cli
