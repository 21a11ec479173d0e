#pragma once

#include <cstdint>
#include <vector>

#include "carving/deep/FoundRow.h"
#include "carving/deep/PageSearch.h"
#include "carving/deep/RowReader.h"
#include "carving/deep/Survey.h"

namespace salvor::deep {

/// Every row that the search accepted, with the images they stand on.
class FoundRows {
  public:
    FoundRows(const Survey& survey, std::vector<PageImage> images)
        : survey_(survey), images_(std::move(images)), reader_(survey) {}

    const Survey& survey() const { return survey_; }
    const std::vector<PageImage>& images() const { return images_; }
    std::vector<FoundRow>& rows() { return rows_; }
    const std::vector<FoundRow>& rows() const { return rows_; }
    const TableModel& tableOf(const FoundRow& row) const { return survey_.tables()[row.table]; }

    void add(const Candidate& candidate, const PageView& view);
    /// What stands of a row, valid until the next call.
    const Record& read(const FoundRow& row) { return read(row, reader_); }
    const Record& read(const FoundRow& row, RowReader& reader) const;
    Candidate candidateOf(const FoundRow& row) const;
    /// What stands of the row that `candidate` is.
    const Record& read(const FoundRow& row, const Candidate& candidate) {
        return reader_.read(images_[row.image], pageOf(row), candidate);
    }
    /// Where the row's cell begins in its file.
    std::uint64_t offsetOf(const FoundRow& row) const {
        return images_[row.image].offset + row.start;
    }
    /// The larger, the later the image's state was.
    std::int64_t timeOf(const FoundRow& row) const;

  private:
    Bytes pageOf(const FoundRow& row) const;

    const Survey& survey_;
    std::vector<PageImage> images_;
    std::vector<FoundRow> rows_;
    RowReader reader_;
};

}  // namespace salvor::deep
