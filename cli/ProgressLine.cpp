#include "cli/ProgressLine.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <vector>

#include "cli/DisplayText.h"

namespace salvor::cli {
namespace {

constexpr unsigned Step = 1, Bar = 2, Percent = 4, Moved = 8, Found = 16, Elapsed = 32;

// From the fullest line to the shortest.
constexpr std::array<unsigned, 5> kLayouts = {
    Step | Bar | Percent | Moved | Found | Elapsed,
    Step | Percent | Moved | Found | Elapsed,
    Step | Percent | Found | Elapsed,
    Step | Percent | Found,
    Percent | Found,
};

std::string bar(double share) {
    constexpr std::size_t kCells = 20;
    const auto filled = static_cast<std::size_t>(share * kCells);
    return '[' + std::string(filled, '#') + std::string(kCells - filled, '.') + ']';
}

std::string lineOf(const ProgressSnapshot& progress, unsigned layout) {
    std::vector<std::string> pieces;
    const auto seconds = progress.elapsed.count();
    if ((layout & Step) != 0 && !progress.step.empty()) pieces.push_back(printable(progress.step));
    if (progress.bytesTotal > 0) {
        const auto done = std::min(progress.bytesDone, progress.bytesTotal);
        const double share = static_cast<double>(done) / static_cast<double>(progress.bytesTotal);
        if ((layout & Bar) != 0) pieces.push_back(bar(share));
        if ((layout & Percent) != 0) pieces.push_back(fmt::format("{:3.0f} %", share * 100));
        if ((layout & Moved) != 0)
            pieces.push_back(
                fmt::format("{} of {}", shownBytes(done), shownBytes(progress.bytesTotal)));
    }
    if ((layout & Found) != 0)
        pieces.push_back(fmt::format("{} deleted found", shownCount(progress.recordsFound)));
    if ((layout & Elapsed) != 0)
        pieces.push_back(fmt::format("{}:{:02}", seconds / 60, seconds % 60));
    return fmt::format("{}", fmt::join(pieces, "  "));
}

}  // namespace

std::string progressLine(const ProgressSnapshot& progress, std::size_t width) {
    std::string line;
    for (const unsigned layout : kLayouts) {
        line = lineOf(progress, layout);
        if (displayWidth(line) <= width) return line;
    }
    return fitted(line, width);
}

}  // namespace salvor::cli
