#include "live/DAOs.h"
#include "live/NoteText.h"
#include "live/RowDates.h"
#include "live/RowReading.h"
#include "scan/StoredNames.h"
#include "sql/SqlFormat.h"

namespace salvor {
namespace {

constexpr auto kNotes =
    "SELECT ZNOTE.ZGUID as guid, ZNOTE.Z_PK, ZCREATIONDATE as creation_date, ZTITLE as title, "
    "ZSUMMARY as summary, ZCONTENT as content FROM ZNOTE INNER JOIN ZNOTEBODY ON ZNOTEBODY.ZOWNER "
    "= ZNOTE.Z_PK WHERE ZDELETEDFLAG = 0";
// Kept: notes-by-own-key.
constexpr auto kDeletedNotes =
    "SELECT ZNOTE.Z_PK, ZCREATIONDATE as creation_date, ZTITLE as title, ZSUMMARY as "
    "summary,ZCONTENT FROM ZNOTE INNER JOIN ZNOTEBODY ON ZNOTEBODY.Z_PK =  ZNOTE.Z_PK WHERE "
    "ZDELETEDFLAG = 1";
constexpr auto kNoteRowIds = "SELECT Z_PK as ROWID FROM ZNOTE";
constexpr auto kDuplicateNote = "SELECT * FROM ZNOTE  where ZTITLE  Like '%%%@";
constexpr auto kDuplicateNoteEnd = "%'";
constexpr auto kNotes91 =
    "SELECT ZICCLOUDSYNCINGOBJECT.ZCREATIONDATE AS DATETIME_ZCREATIONDATE, "
    "DATETIME(ZICCLOUDSYNCINGOBJECT.ZMODIFICATIONDATE + 978307200, 'unixepoch', 'localtime') AS "
    "DATETIME_ZMODIFICATIONDATE,ZICCLOUDSYNCINGOBJECT.ZFOLDERSMODIFICATIONDATE, "
    "ZICCLOUDSYNCINGOBJECT.ZTITLE1, ZICCLOUDSYNCINGOBJECT.ZSNIPPET, ZICNOTEDATA.ZDATA, "
    "Z_12NOTES.Z_12FOLDERS, (SELECT ZICCLOUDSYNCINGOBJECT.ZIDENTIFIER FROM ZICCLOUDSYNCINGOBJECT "
    "WHERE ZICCLOUDSYNCINGOBJECT.Z_PK = Z_12NOTES.Z_12FOLDERS) AS Z_FOLDER_IDENTIFIER, (SELECT "
    "ZICCLOUDSYNCINGOBJECT.ZTITLE2 FROM ZICCLOUDSYNCINGOBJECT WHERE ZICCLOUDSYNCINGOBJECT.Z_PK = "
    "Z_12NOTES.Z_12FOLDERS) AS Z_FOLDER_TITLE2 FROM ZICCLOUDSYNCINGOBJECT INNER JOIN ZICNOTEDATA "
    "ON ZICCLOUDSYNCINGOBJECT.ZNOTEDATA = ZICNOTEDATA.Z_PK INNER JOIN Z_12NOTES ON "
    "ZICNOTEDATA.ZNOTE= Z_12NOTES.Z_9NOTES";

/// The text of a body. Many rows can name one body, and a small one can unpack to a large text, so
/// all of them are held against the room that the connection has for its rows.
Text bodyText(const ResultSet& row, std::string_view data) {
    constexpr std::uint64_t kUnpackedPerByte = 2;  // real bodies unpack to two or three times
    std::uint64_t unpacked = 0;
    auto text = noteTextOfStoredData(data, kUnpackedPerByte * row.room(), &unpacked);
    row.takeRoom(unpacked / kUnpackedPerByte);
    return text;
}

/// One row of the iOS 9 store. Kept: newer-note-dates.
void fillNote91(const ResultSet& row, Note& note) {
    note.Title = row.stringForColumn("ZTITLE1");
    note.Summary = row.stringForColumn("ZSNIPPET");
    note.CreatedDate = textOfReferenceColumn(row, "DATETIME_ZCREATIONDATE");
    note.OriginalCreationDate = row.doubleForColumn("DATETIME_ZCREATIONDATE");
    note.ModificationDate = row.stringForColumn("DATETIME_ZMODIFICATIONDATE");
    if (const auto data = row.dataForColumn("ZDATA")) {
        note.noteBody = std::make_shared<NoteBody>();
        note.noteBody->Content = bodyText(row, *data);
    }
}

}  // namespace

List<Note> DAOs::readNotes(FMDBUtils& database, const char* statement,
                           const char* bodyColumn) const {
    auto list = readRows<Note>(database.executeList({statement}),
                               [bodyColumn](const ResultSet& row, Note& note) {
                                   note.GUID = row.stringForColumn("guid");
                                   note.RowId = row.longLongIntForColumn("Z_PK");
                                   note.CreatedDate = textOfReferenceColumn(row, "creation_date");
                                   note.OriginalCreationDate = row.doubleForColumn("creation_date");
                                   note.Title = row.stringForColumn("title");
                                   note.Summary = row.stringForColumn("summary");
                                   note.noteBody = std::make_shared<NoteBody>();
                                   note.noteBody->Owner = static_cast<std::int32_t>(note.RowId);
                                   if (const auto content = row.stringForColumn(bodyColumn)) {
                                       note.noteBody->Content = plainTextOfHtml(*content);
                                   }
                               });
    numberRows(list);
    return list;
}

List<Note> DAOs::GetNotes() {
    auto list = readNotes(*openCategory(state_.NOTES_DATABASE), kNotes, "content");
    append(state_.AllNotesContent, list);
    // A backup may hold both stores; the count is that of the list they share.
    state_.NoteCount = static_cast<std::int32_t>(state_.AllNotesContent.size());
    return list;
}

List<Note> DAOs::GetNotes91() {
    auto list =
        readRows<Note>(openCategory(NotesIOS9SqliteDbName)->executeList({kNotes91}), fillNote91);
    numberRows(list);
    append(state_.AllNotesContent, list);
    state_.NoteCount = static_cast<std::int32_t>(state_.AllNotesContent.size());
    return list;
}

List<Note> DAOs::GetDeletedNotes() {
    return readNotes(*open(state_.NOTES_DATABASE), kDeletedNotes, "ZCONTENT");
}

std::vector<std::int64_t> DAOs::GetAllNotesRowID() {
    return rowIds(state_.NOTES_DATABASE, kNoteRowIds);
}

bool DAOs::isDuplicateNote(const Text& title) {
    return hasRow(state_.NOTES_DATABASE, formatSql(kDuplicateNote, {title}) + kDuplicateNoteEnd);
}

}  // namespace salvor
