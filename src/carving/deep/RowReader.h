#pragma once

#include <cstdint>
#include <vector>

#include "carving/deep/Candidate.h"
#include "carving/deep/Survey.h"
#include "carving/format/RecordHeader.h"

namespace salvor::deep {

/// Puts together what stands of a candidate's values, overflow pages included: those that the
/// page's own time had and nothing has taken since.
class RowReader {
  public:
    explicit RowReader(const Survey& survey);

    /// The record, valid until the next call; of a candidate that is cut its values end early.
    /// Sets `chainComplete`.
    const Record& read(const PageImage& time, Bytes page, const Candidate& candidate);
    /// Every overflow page of the chain was found.
    bool chainComplete() const { return chainComplete_; }
    /// The overflow pages that were read.
    const std::vector<std::uint32_t>& chain() const { return chain_; }

  private:
    Bytes pageAt(const PageImage& time, std::uint32_t page);

    const Survey& survey_;
    std::uint64_t pagesLeft_;
    Record record_;
    std::vector<std::uint8_t> buffer_;
    std::vector<std::uint32_t> chain_;
    bool chainComplete_ = true;
};

}  // namespace salvor::deep
