#include "services/NotesServices.h"

#include <unordered_set>

#include "live/RowReading.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

// Kept: notes-by-own-key.
constexpr auto kLiveNotes =
    "SELECT DATETIME(ZNOTE.ZCREATIONDATE + 978307200, 'unixepoch', 'localtime') AS "
    "DATETIME_ZCREATIONDATE, DATETIME(ZNOTE.ZMODIFICATIONDATE + 978307200, 'unixepoch', "
    "'localtime') AS DATETIME_ZMODIFICATIONDATE, ZNOTE.ZTITLE, ZNOTE.ZSUMMARY, ZNOTEBODY.ZCONTENT "
    "FROM ZNOTE INNER JOIN ZNOTEBODY ON ZNOTE.Z_PK = ZNOTEBODY.Z_PK";

void fillNote(const ResultSet& row, Note& note) {
    note.CreatedDate = row.stringForColumn("DATETIME_ZCREATIONDATE");
    note.ModificationDate = row.stringForColumn("DATETIME_ZMODIFICATIONDATE");
    note.Title = row.stringForColumn("ZTITLE");
    note.Summary = row.stringForColumn("ZSUMMARY");
    note.noteBody = std::make_shared<NoteBody>();
    note.noteBody->Content = row.stringForColumn("ZCONTENT");
}

}  // namespace

NotesServices::NotesServices(ScanState& state) : abstractServices(state, NotesIOS641SqliteDbName) {}

void NotesServices::RecoverFromIOSBackup(const DeviceInfo& device) {
    if (device.iOSMajorVersion >= 9) {
        getWhatisExisting(device);
        SqliteDbName_ = NotesIOS9SqliteDbName;
        // Replaced below before it runs. Kept: older-note-carvers.
        recoveryNoteBodies_ = std::make_unique<NoteBodiesIOS9SQLiteRecovery>(state_, cancelled_);
    }
    const auto file = ConnectionFileFullPath(device);
    recoveryNoteBodies_ = std::make_unique<NoteBodiesSQLiteRecovery>(state_, cancelled_);
    recoveryNoteBodies_->DoRecoveryPath(file.path);
    indexBodies();
    recoveryNotes_ = std::make_unique<NotesSQLiteRecovery>(state_, cancelled_);
    recoveryNotes_->RecoveredData.assign(state_.DeletedNotes.begin(), state_.DeletedNotes.end());
    recoveryNotes_->DoRecoveryPath(file.path);
    recovered_ = static_cast<std::int32_t>(state_.DeletedNotes.size());
    matchNotebodiesToNotes();
}

void NotesServices::getWhatisExisting(const DeviceInfo& device) {
    dbUtils_ = connection(ConnectionStringfromDevice(device));
    if (!dbUtils_->openDatabase()) return;
    for (auto& note : readRows<Note>(dbUtils_->executeQuery(kLiveNotes), fillNote))
        model_.push_back(std::move(note));
    retrieved_ = static_cast<std::int32_t>(model_.size());
}

List<baseRecoveryObject> NotesServices::carvedBodies() const {
    if (recoveryNoteBodies_ == nullptr) return {};
    return recoveryNoteBodies_->RecoveredFiltered;
}

void NotesServices::indexBodies() {
    firstBodyOfOwner_.clear();
    for (const auto& record : recoveryNoteBodies_->RecoveredFiltered)
        if (auto body = std::dynamic_pointer_cast<NoteBody>(record))
            firstBodyOfOwner_.try_emplace(body->Owner, body);
}

std::shared_ptr<NoteBody> NotesServices::FindNoteBodyFromOwner(std::int64_t owner) const {
    const auto found = firstBodyOfOwner_.find(owner);
    return found == firstBodyOfOwner_.end() ? nullptr : found->second;
}

void NotesServices::matchNotebodiesToNotes() {
    for (const auto& note : state_.DeletedNotes)
        if (note->noteBody == nullptr) note->noteBody = FindNoteBodyFromOwner(note->noteBodyId);
}

void NotesServices::AdditionalFiltering() {
    if (recoveryNoteBodies_ == nullptr) return;
    std::unordered_set<Text> attached;
    std::unordered_map<std::int64_t, List<Note>> waiting;
    for (const auto& note : state_.DeletedNotes) {
        if (note->noteBody == nullptr)
            waiting[note->noteBodyId].push_back(note);
        else if (note->noteBody->Content)
            attached.insert(note->noteBody->Content);
    }
    List<baseRecoveryObject> kept;
    for (const auto& record : recoveryNoteBodies_->RecoveredFiltered) {
        const auto body = std::dynamic_pointer_cast<NoteBody>(record);
        if (body != nullptr && body->Content && attached.contains(body->Content)) continue;
        kept.push_back(record);
        if (body == nullptr) continue;
        const auto notes = waiting.extract(body->Owner);
        if (notes.empty()) continue;
        for (const auto& note : notes.mapped()) note->noteBody = body;
        if (body->Content) attached.insert(body->Content);
    }
    recoveryNoteBodies_->RecoveredFiltered = std::move(kept);
    indexBodies();
}

}  // namespace salvor
