#pragma once

#include "carving/deep/Candidate.h"
#include "carving/deep/CellEnds.h"
#include "carving/deep/PageView.h"
#include "carving/deep/RowReader.h"
#include "carving/deep/Survey.h"

namespace salvor::deep {

/// Weighs candidates: how much likelier it is, as a binary logarithm, that the bytes are a row of
/// the table than that they only read so. Structure, place and values each add their share.
class Weighing {
  public:
    explicit Weighing(const Survey& survey) : survey_(survey), rows_(survey) {}

    /// Sets the candidate's score and whether its content is damaged. `kRefused` for bytes that
    /// are no row whatever else speaks for them.
    void weigh(const PageView& view, const CellEnds& ends, Candidate& candidate);
    /// Whether it weighs enough to be taken for a row, or for what is left of one.
    bool isAccepted(const PageView& view, const CellEnds& ends, const Candidate& candidate) const;

    /// Whether a cell that lost its beginning fills its place on a page of its own table, from one
    /// boundary to the next: what freeing a run of cells leaves.
    static bool isTile(const PageView& view, const CellEnds& ends, const Candidate& candidate);

    static constexpr double kRefused = -1000;

  private:
    double structure(const PageView& view, const CellEnds& ends, const Candidate& candidate) const;
    double wholeCell(const CellEnds& ends, const Candidate& candidate) const;
    double headlessCell(const PageView& view, const CellEnds& ends,
                        const Candidate& candidate) const;
    double place(const PageView& view, const Candidate& candidate) const;
    double content(Candidate& candidate, const Record& record) const;
    const TableModel& tableOf(const Candidate& candidate) const {
        return survey_.tables()[candidate.table];
    }

    const Survey& survey_;
    RowReader rows_;
};

}  // namespace salvor::deep
