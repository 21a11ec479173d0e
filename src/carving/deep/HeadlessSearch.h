#pragma once

#include <cstdint>
#include <vector>

#include "carving/deep/Candidate.h"
#include "carving/deep/CellEnds.h"
#include "carving/deep/PageView.h"
#include "carving/deep/TableModel.h"

namespace salvor::deep {

/// Finds cells that lost the length of their record header, and perhaps the type of their first
/// column, to the header of a freeblock: only behind what reads as such a header. Of a first column
/// that is stored the cell's end tells the type. Nothing is weighed here.
class HeadlessSearch {
  public:
    HeadlessSearch(const std::vector<TableModel>& tables, const DatabaseLayout& layout);

    void search(const PageView& view, const CellEnds& ends, std::vector<Candidate>& found);

  private:
    /// The types that stand from some offset on, as far as they can be types.
    struct TypeRun {
        std::vector<std::uint64_t> types;
        std::vector<std::uint32_t> ends;    ///< behind each type
        std::vector<std::uint64_t> bodies;  ///< bytes of the values up to each type
    };
    struct Place {
        const PageView& view;
        const CellEnds& ends;
        std::uint32_t start;
        std::uint32_t rangeEnd;
        std::vector<Candidate>& found;
    };

    void readRun(Bytes page, std::uint32_t at, std::uint32_t end, TypeRun& run) const;
    void searchAt(const Place& place);
    void searchTable(const Place& place, std::uint16_t number);
    bool fits(const TableModel& table, const TypeRun& run, std::size_t from,
              std::size_t columns) const;
    void tryHeaderLost(const Place& place, std::uint16_t number, std::size_t columns,
                       const TypeRun& run, bool halfHeader) const;
    void tryAliasLost(const Place& place, std::uint16_t number, std::size_t columns) const;
    void tryTypeGuessed(const Place& place, std::uint16_t number, std::size_t columns,
                        const TypeRun& run, bool longType);
    void keepEmptyFirst(const Place& place, Candidate candidate, std::uint64_t header,
                        std::uint64_t known) const;
    void keep(const Place& place, Candidate candidate, std::uint64_t header,
              std::uint64_t body) const;

    const std::vector<TableModel>& tables_;
    std::uint32_t usable_;
    std::size_t maxColumns_ = 0;
    bool twoRuns_ = false;
    PageEffort effort_;
    TypeRun run_;                          ///< from the fourth byte of the place on
    TypeRun nextRun_;                      ///< from the fifth
    std::vector<CellEnds::End> cellEnds_;  ///< of the place, once they were asked for
    bool endsKnown_ = false;
};

}  // namespace salvor::deep
