#include "cli/ProgressLine.h"

#include <array>
#include <fmt/format.h>
#include <utility>
#include <vector>

#include "app/ScanSummary.h"
#include "cli/DisplayText.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

constexpr unsigned kStep = 1, kMoved = 2, kFound = 4, kElapsed = 8;

// From the fullest line to the shortest.
constexpr std::array<unsigned, 4> kLayouts = {kStep | kMoved | kFound | kElapsed,
                                              kStep | kMoved | kFound, kMoved | kFound, kFound};

std::string lineOf(const ProgressSnapshot& progress, unsigned layout) {
    std::vector<std::string> pieces;
    const auto seconds = progress.elapsed.count();
    if ((layout & kStep) != 0 && !progress.step.empty()) pieces.push_back(printable(progress.step));
    // The total grows while files are opened one after another, so a share of it would jump.
    if ((layout & kMoved) != 0 && progress.bytesTotal > 0)
        pieces.push_back(fmt::format("{} of {}", FileUtils::sizeText(progress.bytesDone),
                                     FileUtils::sizeText(progress.bytesTotal)));
    if ((layout & kFound) != 0 && progress.searching)
        pieces.push_back(fmt::format("{} deleted found", countText(progress.recordsFound)));
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
