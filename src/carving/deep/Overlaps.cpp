#include "carving/deep/Overlaps.h"

#include <algorithm>

namespace salvor::deep {
namespace {

// Two headers so near that lead to one end are two readings of one.
constexpr std::uint32_t kNear = 24;
// A cell with values in order is not given up for a small reading of some of its bytes.
constexpr double kSmall = 60;
constexpr double kMuchMore = 40;

/// Whether a cell that begins inside an intact one is the one to believe. A reading that nothing on
/// the page bears out has to outweigh it.
bool outweighs(const CellEnds& ends, const Candidate& inner, const Candidate& outer) {
    constexpr double kFirmEnd = 8;
    const bool firm =
        ends.beginsBlock(inner.start) || ends.endWeight(inner.start, inner.end) >= kFirmEnd;
    if (inner.isHeadless() && !firm) return inner.score >= outer.score;
    return inner.score >= kSmall || outer.score < inner.score + kMuchMore;
}

}  // namespace

bool Overlaps::claim(const Candidate& candidate) {
    for (std::uint32_t at = candidate.start; at < candidate.bodyAt; ++at)
        if (headers_[at]) return false;
    if (candidate.end < ends_.size()) {
        std::uint32_t& body = ends_[candidate.end];
        if (body != 0 &&
            std::max(body, candidate.bodyAt) - std::min(body, candidate.bodyAt) <= kNear)
            return false;
        body = candidate.bodyAt;
    }
    std::fill(headers_.begin() + candidate.start, headers_.begin() + candidate.bodyAt, true);
    return true;
}

void Overlaps::settle(const CellEnds& ends, std::uint32_t pageSize, std::vector<Candidate>& found) {
    std::stable_sort(found.begin(), found.end(),
                     [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
    headers_.assign(std::size_t{pageSize} + 1, false);
    ends_.assign(std::size_t{pageSize} + 1, 0);
    std::erase_if(found, [this](const Candidate& candidate) { return !claim(candidate); });
    std::sort(found.begin(), found.end(),
              [](const Candidate& a, const Candidate& b) { return a.start < b.start; });
    cutOverwritten(ends, found);
}

void Overlaps::cutOverwritten(const CellEnds& ends, std::vector<Candidate>& found) const {
    std::vector<Candidate> kept;
    kept.reserve(found.size());
    for (const Candidate& next : found) {
        if (!kept.empty()) {
            Candidate& last = kept.back();
            const bool inside = next.start < last.end;
            if (inside && last.isIntact() && !outweighs(ends, next, last)) continue;
            if (inside) last.standsTo = std::min(last.standsTo, next.start);
        }
        kept.push_back(next);
        Candidate& own = kept.back();
        if (const std::uint32_t block = ends.blockInside(own.start, own.end))
            own.standsTo = std::min(own.standsTo, block);
    }
    found = std::move(kept);
}

}  // namespace salvor::deep
