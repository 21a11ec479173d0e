#pragma once

#include "records/Note.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// Carves the headers of deleted notes (ZNOTE). Every record becomes a deleted note of the scan;
/// `RecoveredData` holds those notes, so that a row id is listed once, and `RecoveredFiltered`
/// afterwards the ones without a live row of the same summary and title.
class NotesSQLiteRecovery : public CategoryCarver<Note> {
  public:
    static const SignatureUse<Note> kSignature;

    explicit NotesSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// A statement that does not prepare counts as no live row. Kept: unquoted-values.
    void filterMessages();

  protected:
    std::string_view liveRowsStatement() const override { return "SELECT * FROM ZNOTE"; }
    bool needsRecoveredMark() const override { return false; }  // Kept: notes-need-no-mark.
    void recordCarved(const std::shared_ptr<Note>& note) override;
    void afterRecovery() override { filterMessages(); }
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;
};

}  // namespace salvor
