#include "recovery/NotesSQLiteRecovery.h"

#include <fmt/format.h>

#include "util/DateUtils.h"

namespace salvor {
namespace {

template <double Note::*Raw, salvor::Text Note::*Shown>
void storeDate(Note& note, const OptionalColumnValue& value) {
    note.*Raw = columnDouble(value);
    if (value) note.*Shown = DateUtils::doubleIOSDateTimeToString(note.*Raw);
}

// Kept: title-as-summary.
void storeTitle(Note& note, const OptionalColumnValue& value) {
    note.Title = columnText(value);
    if (!note.Summary) note.Summary = note.Title;
}

constexpr ColumnAttribute<Note> kAttributes[] = {
    {"ZBODY", storeInteger<&Note::noteBodyId>},
    {"ZCREATIONDATE", storeDate<&Note::OriginalCreationDate, &Note::CreatedDate>},
    {"ZMODIFICATIONDATE", storeDate<&Note::OriginalModificationDate, &Note::ModificationDate>},
    {"ZSUMMARY", storeText<&Note::Summary>},
    {"ZTITLE", storeTitle},
};

std::string liveNoteStatement(const Note& note) {
    const std::string summary = note.Summary ? fmt::format(" ZSUMMARY={}", *note.Summary)
                                             : " (ZSUMMARY IS NULL OR ZSUMMARY='')";
    const std::string title =
        note.Title ? fmt::format(" AND ZTITLE=={}", *note.Title) : " AND ZTITLE IS NULL";
    return "SELECT ZSUMMARY, ZTITLE FROM ZNOTE where" + summary + title;
}

}  // namespace

constinit const SignatureUse<Note> NotesSQLiteRecovery::kSignature{
    {"HomeDomain", "notes.sqlite", "ZNOTE"}, kAttributes};

NotesSQLiteRecovery::NotesSQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : CategoryCarver(state, std::move(cancelled), kSignature) {}

void NotesSQLiteRecovery::recordCarved(const std::shared_ptr<Note>& note) {
    incrementRecoveryCount();
    state_.AllDeletedNotes.push_back(note);
    state_.DeletedNotes.push_back(note);
    RecoveredData.push_back(note);
    ++state_.progress.recordsFound;
}

void NotesSQLiteRecovery::filterMessages() {
    keepRecordsWithoutLiveRow([](const Note& note) { return liveNoteStatement(note); });
}

std::int32_t NotesSQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletedNoteCount = count;
    return count;
}

std::int32_t NotesSQLiteRecovery::incrementRecoveryCount() {
    return ++state_.DeletedNoteCount;
}

}  // namespace salvor
