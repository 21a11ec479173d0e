#include "recovery/carvers/NoteBodiesSQLiteRecovery.h"
#include "recovery/carvers/NotesSQLiteRecovery.h"
#include "tests/recovery/carvers/CarverProbe.h"

namespace salvor {
namespace {

using NotesProbe = CarverProbe<NotesSQLiteRecovery, Note>;
using BodiesProbe = CarverProbe<NoteBodiesSQLiteRecovery, NoteBody>;
using StoreProbe = CarverProbe<NoteBodiesIOS9SQLiteRecovery, NoteBody>;

class NotesCarvers : public CategoryCarverTest {
  protected:
    NotesCarvers() {
        sql("CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, ZBODY, ZCREATIONDATE, ZSUMMARY, "
            "ZTITLE)");
        addSignature(state, "notes.sqlite", "ZNOTE", "[1];[1];[0];[1,2];[4];[-12];[-12]",
                     {{"ZBODY", 3}, {"ZCREATIONDATE", 4}, {"ZSUMMARY", 5}, {"ZTITLE", 6}});
    }

    /// Deleted notes as an earlier step of the scan left them, walked by the filter.
    void deletedNote(const Text& summary, const Text& title) {
        auto note = std::make_shared<Note>();
        note->Summary = summary;
        note->Title = title;
        carver.RecoveredData.push_back(note);
    }

    NotesProbe carver{state};
};

TEST_F(NotesCarvers, FillANoteByName) {
    Note& note = carver.filled("ZBODY", std::int64_t{5});
    EXPECT_EQ(note.noteBodyId, 5);
    EXPECT_TRUE(note.Recovered);
    carver.fill("ZCREATIONDATE", 86400.5);
    EXPECT_EQ(note.OriginalCreationDate, 86400.5);
    EXPECT_EQ(note.CreatedDate, "2001-01-02 00:00:00");
    carver.fill("ZMODIFICATIONDATE", std::int64_t{60});
    EXPECT_EQ(note.OriginalModificationDate, 60);
    EXPECT_EQ(note.ModificationDate, "2001-01-01 00:01:00");
    carver.fill("ZSUMMARY", "summary");
    carver.fill("ZTITLE", "title");
    EXPECT_EQ(note.Summary, "summary");
    EXPECT_EQ(note.Title, "title");
}

TEST_F(NotesCarvers, ATitleBeforeAnySummaryIsBoth) {
    const Note& note = carver.filled("ZTITLE", "title");
    EXPECT_EQ(note.Summary, "title");
    EXPECT_EQ(note.Title, "title");
}

TEST_F(NotesCarvers, EveryCompletedRecordIsADeletedNoteEvenAnEmptyOne) {
    carver.begin();
    carver.add();
    carver.filled("ZTITLE", "title");
    carver.add();
    EXPECT_EQ(state.DeletedNoteCount, 2);
    EXPECT_EQ(state.DeletedNotes.size(), 2U);
    EXPECT_EQ(state.DeletedNotes, state.AllDeletedNotes);
}

TEST_F(NotesCarvers, WithoutALiveRowNothingIsCarved) {
    const std::string deleted =
        "CREATE TABLE gone (Z_PK INTEGER PRIMARY KEY, a, b, c, d); INSERT INTO gone VALUES "
        "(7, 70, 400000000, 'summary', 'title'), (8, 80, 400000000, 'other summary', 'other')";
    sql(deleted);
    sql("DROP TABLE gone");
    carver.DoRecoveryPath(database);
    EXPECT_TRUE(carver.patterns().empty());
    EXPECT_TRUE(state.DeletedNotes.empty());

    sql("INSERT INTO ZNOTE VALUES (1, 10, 400000000, 'live', 'live')");
    NotesProbe(state).DoRecoveryPath(database);
    EXPECT_THAT(texts(state.DeletedNotes, &Note::Title),
                testing::UnorderedElementsAre("title", "other"));
}

// Values stand without quotes in the statement: a text does not prepare and counts as not live.
TEST_F(NotesCarvers, TheFilterDropsOnlyWhatALiveRowAnswers) {
    sql("INSERT INTO ZNOTE VALUES (1, 0, 0, 12, 34), (2, 0, 0, '', NULL), (3, 0, 0, 'a', 'b')");
    carver.fullDBPath = database;
    deletedNote("12", "34");
    deletedNote("12", "35");
    deletedNote(std::nullopt, std::nullopt);
    deletedNote("two words", "34");
    deletedNote("it's", std::nullopt);
    deletedNote("a", "b");
    deletedNote(std::nullopt, "34");
    carver.filterMessages();
    Texts kept;
    for (const auto& record : carver.RecoveredFiltered) {
        const auto& note = dynamic_cast<const Note&>(*record);
        kept.push_back(note.Summary.value_or("-") + "/" + note.Title.value_or("-"));
    }
    EXPECT_EQ(kept, (Texts{"12/35", "two words/34", "it's/-", "a/b", "-/34"}));

    carver.RecoveredFiltered.clear();
    carver.fullDBPath = folder / "missing";
    carver.filterMessages();
    EXPECT_TRUE(carver.RecoveredFiltered.empty());
}

TEST_F(NotesCarvers, BodiesStandInTheFilteredListAtOnce) {
    BodiesProbe bodies(state);
    NoteBody& body = bodies.filled("ZOWNER", std::int64_t{(1LL << 32) + 9});
    EXPECT_EQ(body.Owner, 9) << "cut to 32 bits";
    bodies.fill("ZCONTENT", "<div>text");
    bodies.add();
    bodies.begin();
    bodies.add();
    ASSERT_EQ(bodies.RecoveredFiltered.size(), 1U) << "one without any column is passed over";
    EXPECT_EQ(dynamic_cast<const NoteBody&>(*bodies.RecoveredFiltered[0]).Content, "<div>text");
    EXPECT_EQ(state.DeletedNoteCount, 0);
}

TEST_F(NotesCarvers, BodiesNeedALiveOneAndAreComparedWithoutQuotes) {
    addSignature(state, "notes.sqlite", "ZNOTEBODY", "[1];[1];[0];[1,2];[-12]",
                 {{"ZOWNER", 3}, {"ZCONTENT", 4}});
    sql("CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, ZOWNER, ZCONTENT); "
        "CREATE TABLE gone (Z_PK INTEGER PRIMARY KEY, a, b); INSERT INTO gone VALUES "
        "(7, 70, 'deleted text'), (8, 80, 'more of it')");
    sql("DROP TABLE gone");
    BodiesProbe empty(state);
    empty.DoRecoveryPath(database);
    EXPECT_TRUE(empty.RecoveredFiltered.empty());
    sql("INSERT INTO ZNOTEBODY VALUES (1, 10, 12)");
    BodiesProbe bodies(state);
    bodies.DoRecoveryPath(database);
    EXPECT_EQ(bodies.RecoveredFiltered.size(), 2U);

    bodies.RecoveredFiltered.clear();
    for (const Text& content : {Text("12"), Text("13"), Text("two words"), Text()}) {
        bodies.RecoveredData.push_back(std::make_shared<NoteBody>());
        static_cast<NoteBody&>(*bodies.RecoveredData.back()).Content = content;
    }
    bodies.filterMessages();
    Texts kept;
    for (const auto& record : bodies.RecoveredFiltered)
        kept.push_back(dynamic_cast<const NoteBody&>(*record).Content.value_or("-"));
    EXPECT_EQ(kept, (Texts{"13", "two words", "-"}));
}

TEST_F(NotesCarvers, TheNoteStoreVariantTakesItsPatternsFromItsOwnTable) {
    addSignature(state, "notes.sqlite", "ZICNOTEDATA", "[1];[1];[0];[1,2];[-12]",
                 {{"ZNOTE", 3}, {"ZDATA", 4}});
    sql("CREATE TABLE ZICNOTEDATA (Z_PK INTEGER PRIMARY KEY, ZNOTE, ZDATA); "
        "CREATE TABLE gone (Z_PK INTEGER PRIMARY KEY, a, b); "
        "INSERT INTO gone VALUES (3, 30, 'deleted text'), (4, 40, 'more of it')");
    sql("DROP TABLE gone");
    StoreProbe empty(state);
    empty.DoRecovery(database);
    EXPECT_TRUE(empty.RecoveredFiltered.empty());

    sql("INSERT INTO ZICNOTEDATA VALUES (1, 10, 'live')");
    StoreProbe store(state);
    store.DoRecovery(database);
    std::map<int, Text> found;
    for (const auto& record : store.RecoveredFiltered) {
        const auto& body = dynamic_cast<const NoteBody&>(*record);
        found[body.Owner] = body.Content;
    }
    EXPECT_EQ(found[30], "deleted text");
    EXPECT_EQ(found[40], "more of it");

    StoreProbe missing(state);
    missing.DoRecovery(folder / "missing");
    EXPECT_TRUE(missing.RecoveredFiltered.empty());
}

TEST_F(NotesCarvers, GzipDataBeginsWithItsMagicAndHasAWholeHeader) {
    const auto isGzip = [](const std::vector<std::uint8_t>& data) {
        return NoteBodiesIOS9SQLiteRecovery::IsGzipHeaderValue(data);
    };
    EXPECT_TRUE(isGzip({0x1F, 0x8B, 8, 0, 1, 2, 3, 4}));
    EXPECT_FALSE(isGzip({0x1F, 0x8B, 8, 0, 1, 2, 3}));
    EXPECT_FALSE(isGzip({0x1F, 0x8B, 8, 8, 1, 2, 3, 4})) << "a header with a file name";
    EXPECT_FALSE(isGzip({}));
}

}  // namespace
}  // namespace salvor
