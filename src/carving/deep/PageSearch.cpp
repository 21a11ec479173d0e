#include "carving/deep/PageSearch.h"

namespace salvor::deep {
PageSearch::PageSearch(const Survey& survey)
    : viewer_(survey.store(), survey.uses()),
      cells_(survey.tables(), survey.store().layout()),
      headless_(survey.tables(), survey.store().layout()),
      weighing_(survey) {}

bool PageSearch::isLesson(const Candidate& candidate) const {
    constexpr double kSureEnough = 40;
    if (!candidate.isIntact()) return false;
    return candidate.isHeadless() ? Weighing::isTile(view_, ends_, candidate)
                                  : candidate.score >= kSureEnough;
}

const std::vector<Candidate>& PageSearch::search(const PageImage& image, std::uint32_t number) {
    found_.clear();
    viewer_.look(image, number, view_);
    if (view_.ranges.empty() && view_.oldCells.empty()) return found_;
    cells_.search(view_, found_);
    ends_.begin(view_);
    ends_.add(found_);
    headless_.search(view_, ends_, found_);
    ends_.addRows(found_);
    PageEffort effort;
    effort.begin(view_.bytes.size());
    for (Candidate& candidate : found_) {
        candidate.score = Weighing::kRefused;
        if (effort.spend(candidate.bodyOnPage() + std::size_t{1}))
            weighing_.weigh(view_, ends_, candidate);
    }
    std::erase_if(found_, [this](const Candidate& candidate) {
        return !weighing_.isAccepted(view_, ends_, candidate);
    });
    overlaps_.settle(ends_, static_cast<std::uint32_t>(view_.bytes.size()), found_);
    return found_;
}

}  // namespace salvor::deep
