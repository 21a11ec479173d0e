#pragma once

#include <cstdint>
#include <vector>

#include "carving/deep/Candidate.h"
#include "carving/deep/PageView.h"
#include "carving/deep/SearchPlan.h"
#include "carving/deep/TableModel.h"
#include "carving/format/BigEndian.h"

namespace salvor::deep {

/// Where the block ends that the header at `offset` tells of.
inline std::uint32_t freeblockEnd(Bytes page, std::uint32_t offset) {
    return offset + bigEndian16(page, offset + 2);
}
/// Whether four bytes at `offset` read as a freeblock header that once was true.
inline bool isFreeblockHeader(Bytes page, std::uint32_t offset) {
    const auto usable = static_cast<std::uint32_t>(page.size());
    if (usable < 4 || offset > usable - 4) return false;
    const std::uint32_t word = bigEndian32(page, offset);
    const std::uint32_t next = word >> 16;
    const std::uint32_t size = word & 0xFFFFu;
    if (size < 4 || size > usable - offset) return false;
    return next == 0 || (next >= offset + size && next <= usable - 4);
}
/// Whether the bytes from `start` on are the end of a varint that ends before `end`; none are too.
bool endsVarint(Bytes page, std::uint32_t start, std::uint32_t end);

/// Finds every place in the unallocated bytes of a page where the record header of a table stands,
/// and makes candidates of them: whole cells, and cells that lost what stands before the header.
/// Nothing is weighed here.
class CellSearch {
  public:
    CellSearch(const std::vector<TableModel>& tables, const DatabaseLayout& layout);

    /// Appends to `found`; a cell of the page's own pointer array that reads as no row becomes a
    /// range of `view`.
    void search(PageView& view, std::vector<Candidate>& found);

  private:
    void searchOldCells(PageView& view, std::vector<Candidate>& found);
    void searchRange(const PageView& view, const ByteRange& range, std::vector<Candidate>& found);
    void readHeader(const PageView& view, const ByteRange& range, std::uint32_t at,
                    std::uint32_t lengthBytes, std::uint32_t length, std::vector<Candidate>& found);
    bool fits(const TableModel& table) const;
    bool tryWhole(const PageView& view, const ByteRange& range, std::uint32_t at,
                  Candidate candidate, std::vector<Candidate>& found) const;
    void tryHeadless(const PageView& view, const ByteRange& range, std::uint32_t at,
                     Candidate candidate, std::vector<Candidate>& found) const;

    const std::vector<TableModel>& tables_;
    SearchPlan plan_;
    std::uint32_t usable_;
    PageEffort effort_;
    std::vector<std::uint64_t> types_;
};

}  // namespace salvor::deep
