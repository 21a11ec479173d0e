#include "services/NotesServices.h"

#include "tests/services/CategoryFixture.h"

namespace salvor {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

constexpr auto kNoteColumns =
    "(Z_PK INTEGER PRIMARY KEY, Z_ENT, Z_OPT, ZCONTAINSCJK, ZCONTENTTYPE, ZDELETEDFLAG, "
    "ZEXTERNALFLAGS, ZEXTERNALSEQUENCENUMBER, ZEXTERNALSERVERINTID, ZINTEGERID, "
    "ZISBOOKKEEPINGENTRY, ZBODY, ZSTORE, ZCREATIONDATE, ZMODIFICATIONDATE, ZAUTHOR, ZGUID, "
    "ZSERVERID, ZSUMMARY, ZTITLE)";
constexpr auto kBodyColumns =
    "(Z_PK INTEGER PRIMARY KEY, Z_ENT, Z_OPT, ZOWNER, ZCONTENT, ZEXTERNALCONTENTREF, "
    "ZEXTERNALREPRESENTATION)";

std::string noteRow(int key, int body, const std::string& title) {
    const auto number = std::to_string(key);
    return "(" + number + ",3,2,0,0,0,0,0,-4294967296," + number + ",0," + std::to_string(body) +
           ",1,60.5,3600.25,NULL,'0D9C1E0A-7A6C-4D53-9C5B-0123456789AB',NULL,'about " + title +
           "','" + title + "')";
}

std::string bodyRow(int key, int owner, const std::string& content) {
    return "(" + std::to_string(key) + ",4,2," + std::to_string(owner) + ",'" + content +
           "',NULL,NULL)";
}

std::string liveTables(const std::string& notes, const std::string& bodies) {
    return table("ZNOTE", kNoteColumns, notes) + table("ZNOTEBODY", kBodyColumns, bodies);
}

class Notes : public CategoryFixture {
  protected:
    /// One live note, and deleted ones with two bodies of owner 101 and one of owner 102.
    void storeSample(const char* name) const {
        store(name, liveTables(noteRow(3, 3, "live"), bodyRow(3, 3, "live body")),
              {{kBodyColumns, bodyRow(21, 101, "second of one") + "," +
                                  bodyRow(22, 102, "body of two") + "," +
                                  bodyRow(23, 101, "first of one")},
               {kNoteColumns, noteRow(11, 101, "one") + "," + noteRow(12, 102, "two") + "," +
                                  noteRow(13, 103, "three")}});
    }

    Texts deletedNotes() const {
        Texts lines;
        for (const auto& note : state.DeletedNotes)
            lines.push_back(
                joined({note->Title, note->noteBody ? note->noteBody->Content : Text()}));
        return lines;
    }

    void addDeletedNote(const char* title, int bodyId, const char* body = nullptr) {
        auto note = std::make_shared<Note>();
        note->RowId = 900 + bodyId;
        note->Title = title;
        note->noteBodyId = bodyId;
        if (body != nullptr) {
            note->noteBody = std::make_shared<NoteBody>();
            note->noteBody->Content = body;
        }
        state.DeletedNotes.push_back(note);
    }
};

TEST_F(Notes, JoinsEachDeletedNoteToTheFirstBodyThatItOwns) {
    storeSample(NotesIOS641SqliteDbName);
    NotesServices service(state);
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(deletedNotes(),
                UnorderedElementsAre("one|first of one", "three|-", "two|body of two"));
    EXPECT_EQ(state.AllDeletedNotes, state.DeletedNotes);
    EXPECT_EQ(state.DeletedNoteCount, 3);
    EXPECT_EQ(service.recovered(), 3);
    ASSERT_NE(service.FindNoteBodyFromOwner(101), nullptr);
    EXPECT_EQ(service.FindNoteBodyFromOwner(101)->Content, "first of one");
    EXPECT_EQ(service.FindNoteBodyFromOwner(103), nullptr);
    // The live notes are read on iOS 9 and later only.
    EXPECT_TRUE(service.model().empty());
    EXPECT_EQ(service.retrieved(), 0);
}

TEST_F(Notes, ABodyOnceAttachedStaysAndAListedNoteIsNotListedAgain) {
    addDeletedNote("seen", 101, "its own");
    addDeletedNote("bare", 102);
    addDeletedNote("listed", 103);
    state.DeletedNotes.back()->RowId = 12;
    storeSample(NotesIOS641SqliteDbName);
    NotesServices(state).RecoverFromIOSBackup(device);
    EXPECT_THAT(deletedNotes(), UnorderedElementsAre("bare|body of two", "one|first of one",
                                                     "seen|its own", "three|-", "listed|-"));
}

// The older note bodies are what is carved on iOS 9 too, out of the newer store.
TEST_F(Notes, OnIos9ReadsTheOlderStoreAndCarvesTheNewerOne) {
    device.iOSMajorVersion = 9;
    store(NotesIOS641SqliteDbName, liveTables(noteRow(3, 3, "older"), bodyRow(3, 3, "older body")),
          {{kNoteColumns, noteRow(11, 101, "never read")}});
    storeSample(NotesIOS9SqliteDbName);
    NotesServices service(state);
    service.RecoverFromIOSBackup(device);
    ASSERT_EQ(service.model().size(), 1U);
    EXPECT_EQ(dynamic_cast<const Note&>(*service.model()[0]).Title, "older");
    EXPECT_EQ(service.SqliteDbName(), NotesIOS9SqliteDbName);
    EXPECT_THAT(deletedNotes(),
                UnorderedElementsAre("one|first of one", "three|-", "two|body of two"));
}

TEST_F(Notes, ReadsLiveNotesWithTheBodyOfTheSameKey) {
    // Kept: notes-by-own-key.
    store(NotesIOS641SqliteDbName,
          liveTables(noteRow(3, 4, "a") + "," + noteRow(4, 3, "b") + "," + noteRow(5, 6, "c"),
                     bodyRow(3, 4, "<b>of 4</b>") + "," + bodyRow(4, 3, "of 3") + "," +
                         bodyRow(6, 5, "of 5")));
    NotesServices service(state);
    service.getWhatisExisting(device);
    Texts lines;
    for (const auto* note : recordsOf<Note>(service)) {
        lines.push_back(joined({note->CreatedDate, note->ModificationDate, note->Title,
                                note->Summary, note->noteBody->Content}));
        EXPECT_FALSE(note->Recovered);
    }
    EXPECT_THAT(lines, ElementsAre("2001-01-01 00:01:00|2001-01-01 01:00:00|a|about a|<b>of 4</b>",
                                   "2001-01-01 00:01:00|2001-01-01 01:00:00|b|about b|of 3"));
    EXPECT_EQ(service.retrieved(), 2);
}

TEST_F(Notes, FilteringDropsBodiesThatAreAttachedAndAttachesTheOthers) {
    const auto rows = bodyRow(21, 7, "taken") + "," + bodyRow(22, 101, "late") + "," +
                      bodyRow(23, 8, "fresh") + "," + bodyRow(24, 101, "fresh") + "," +
                      bodyRow(25, 9, "other");
    store(NotesIOS641SqliteDbName, liveTables(noteRow(3, 3, "live"), bodyRow(3, 3, "live body")),
          {{kBodyColumns, rows}});
    NotesServices service(state);
    service.RecoverFromIOSBackup(device);
    ASSERT_THAT(textsOf(service.carvedBodies(), &NoteBody::Content),
                ElementsAre("other", "fresh", "fresh", "late", "taken"));
    addDeletedNote("has one", 7, "taken");
    addDeletedNote("waits", 101);
    addDeletedNote("waits too", 101);
    service.AdditionalFiltering();
    EXPECT_THAT(textsOf(service.carvedBodies(), &NoteBody::Content),
                ElementsAre("other", "fresh", "late"));
    EXPECT_THAT(deletedNotes(),
                UnorderedElementsAre("has one|taken", "waits too|fresh", "waits|fresh"));
    EXPECT_EQ(service.FindNoteBodyFromOwner(101)->Content, "fresh");
    EXPECT_EQ(service.FindNoteBodyFromOwner(8), nullptr);
}

TEST_F(Notes, ValuesOfAnotherTypeAreReadAsFarAsTheyGo) {
    store(NotesIOS641SqliteDbName,
          "CREATE TABLE ZNOTE(Z_PK, ZCREATIONDATE, ZMODIFICATIONDATE, ZTITLE, ZSUMMARY);"
          "CREATE TABLE ZNOTEBODY(Z_PK, ZCONTENT);"
          "INSERT INTO ZNOTE VALUES(1, 9e999, 'soon', x'FF', 5);"
          "INSERT INTO ZNOTEBODY VALUES(1, NULL)");
    NotesServices service(state);
    service.getWhatisExisting(device);
    ASSERT_EQ(service.model().size(), 1U);
    const auto& note = dynamic_cast<const Note&>(*service.model()[0]);
    EXPECT_EQ(joined({note.CreatedDate, note.Title, note.Summary, note.noteBody->Content}),
              "-|-|5|-");
}

}  // namespace
}  // namespace salvor
