#pragma once

#include <cstdint>
#include <vector>

#include "carving/deep/Candidate.h"
#include "carving/deep/CellEnds.h"
#include "carving/deep/CellSearch.h"
#include "carving/deep/HeadlessSearch.h"
#include "carving/deep/Overlaps.h"
#include "carving/deep/PageView.h"
#include "carving/deep/Survey.h"
#include "carving/deep/Weighing.h"

namespace salvor::deep {

/// Searches one page image after another for rows of the surveyed tables.
class PageSearch {
  public:
    explicit PageSearch(const Survey& survey);

    /// The rows and fragments of this image, in order of offset, valid until the next call.
    const std::vector<Candidate>& search(const PageImage& image, std::uint32_t number);
    /// The page as it was searched last.
    const PageView& view() const { return view_; }
    /// Whether other rows can be learned from this one of the last result.
    bool isLesson(const Candidate& candidate) const;

  private:
    PageViewer viewer_;
    CellSearch cells_;
    HeadlessSearch headless_;
    Weighing weighing_;
    CellEnds ends_;
    Overlaps overlaps_;
    PageView view_;
    std::vector<Candidate> found_;
};

}  // namespace salvor::deep
