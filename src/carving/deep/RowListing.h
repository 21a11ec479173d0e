#pragma once

#include <string>
#include <vector>

#include "carving/deep/FoundRows.h"
#include "carving/deep/RecoveredRow.h"

namespace salvor::deep {

/// Turns found rows into rows to be handed on: values, confidence, reasons, places.
class RowListing {
  public:
    explicit RowListing(FoundRows& found)
        : found_(found), viewer_(found.survey().store(), found.survey().uses()) {}

    RecoveredRow listed(const FoundRow& row);
    Confidence confidenceOf(const FoundRow& row) const;
    /// A live row, from its record.
    RecoveredRow live(std::uint16_t table, const PageImage& image, const Cell& cell,
                      const Record& record) const;

  private:
    void addColumns(const Record& record, std::uint64_t bodyOffset, std::uint64_t onPage,
                    const TableDefinition& definition, bool openFirst, RecoveredRow& out) const;
    RowPlace placeOf(const FoundRow& row);
    std::vector<std::string> reasonsOf(const FoundRow& row) const;

    FoundRows& found_;
    PageViewer viewer_;
    PageView view_;
};

}  // namespace salvor::deep
