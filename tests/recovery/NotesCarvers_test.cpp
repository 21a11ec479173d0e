#include "recovery/NoteBodiesSQLiteRecovery.h"
#include "recovery/NotesSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

using NotesProbe = CarverProbe<NotesSQLiteRecovery, Note>;
using BodiesProbe = CarverProbe<NoteBodiesSQLiteRecovery, NoteBody>;
using StoreProbe = CarverProbe<NoteBodiesIOS9SQLiteRecovery, NoteBody>;

class NotesCarvers : public CategoryCarverTest {
  protected:
    NotesCarvers() {
        sql("CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, ZBODY, ZCREATIONDATE, ZSUMMARY, "
            "ZTITLE)");
        signature("notes.sqlite", "ZNOTE", "[1];[1];[0];[1,2];[4];[-12];[-12]",
                  {{"ZBODY", 3}, {"ZCREATIONDATE", 4}, {"ZSUMMARY", 5}, {"ZTITLE", 6}});
    }

    NotesProbe carver{state};
};

TEST_F(NotesCarvers, FillANoteByName) {
    EXPECT_EQ(told(carver.filled({{"ZBODY", std::int64_t{5}},
                                  {"ZCREATIONDATE", 86400.5},
                                  {"ZMODIFICATIONDATE", std::int64_t{60}},
                                  {"ZSUMMARY", "summary"},
                                  {"ZTITLE", "title"}})),
              "Recovered=true|CreatedDate=2001-01-02 00:00:00|"
              "ModificationDate=2001-01-01 00:01:00|OriginalCreationDate=86400.5|"
              "OriginalModificationDate=60|Title=title|Summary=summary|noteBodyId=5");
    // A title before any summary is both.
    EXPECT_EQ(told(carver.filled({{"ZTITLE", "title"}})),
              "Recovered=true|Title=title|Summary=title");
}

TEST_F(NotesCarvers, EveryCompletedRecordIsADeletedNoteEvenAnEmptyOne) {
    carver.add({});
    carver.add({{"ZTITLE", "title"}});
    EXPECT_EQ(state.DeletedNoteCount, 2);
    EXPECT_THAT(textsOf(state.DeletedNotes, &Note::Title), ElementsAre("-", "title"));
    EXPECT_EQ(state.DeletedNotes, state.AllDeletedNotes);
}

TEST_F(NotesCarvers, WithoutALiveRowNothingIsCarved) {
    sql("", {{"(Z_PK INTEGER PRIMARY KEY, a, b, c, d)",
              "(7, 70, 400000000, 'summary', 'title'), (8, 80, 400000000, 'other summary', "
              "'other')"}});
    carver.DoRecoveryPath(database);
    EXPECT_TRUE(carver.patterns().empty());
    EXPECT_TRUE(state.DeletedNotes.empty());

    sql("INSERT INTO ZNOTE VALUES (1, 10, 400000000, 'live', 'live')");
    NotesProbe(state).DoRecoveryPath(database);
    EXPECT_THAT(textsOf(state.DeletedNotes, &Note::Title), UnorderedElementsAre("title", "other"));
}

// Values stand without quotes in the statement: a text does not prepare and counts as not live.
TEST_F(NotesCarvers, TheFilterDropsOnlyWhatALiveRowAnswers) {
    sql("INSERT INTO ZNOTE VALUES (1, 0, 0, 12, 34), (2, 0, 0, '', NULL), (3, 0, 0, 'a', 'b')");
    const std::pair<Text, Text> notes[] = {{"12", "34"},        {"12", "35"}, {{}, {}},
                                           {"two words", "34"}, {"it's", {}}, {"a", "b"},
                                           {std::nullopt, "34"}};
    for (const auto& [summary, title] : notes) {
        auto note = std::make_shared<Note>();
        note->Summary = summary;
        note->Title = title;
        carver.RecoveredData.push_back(note);
    }
    carver.fullDBPath = database;
    carver.filterMessages();
    EXPECT_THAT(textsOf(carver.RecoveredFiltered, &Note::Summary),
                ElementsAre("12", "two words", "it's", "a", "-"));

    carver.RecoveredFiltered.clear();
    carver.fullDBPath = folder / "missing";
    carver.filterMessages();
    EXPECT_TRUE(carver.RecoveredFiltered.empty());
}

TEST_F(NotesCarvers, BodiesStandInTheFilteredListAtOnce) {
    BodiesProbe bodies(state);
    bodies.add({{"ZOWNER", std::int64_t{(1LL << 32) + 9}}, {"ZCONTENT", "<div>text"}});
    bodies.add({});
    ASSERT_EQ(bodies.RecoveredFiltered.size(), 1U) << "one without any column is passed over";
    EXPECT_EQ(told(dynamic_cast<const NoteBody&>(*bodies.RecoveredFiltered[0])),
              "Recovered=true|Owner=9|Content=<div>text")
        << "an owner is cut to 32 bits";
    EXPECT_EQ(state.DeletedNoteCount, 0);
}

TEST_F(NotesCarvers, BodiesNeedALiveOneAndAreComparedWithoutQuotes) {
    signature("notes.sqlite", "ZNOTEBODY", "[1];[1];[0];[1,2];[-12]",
              {{"ZOWNER", 3}, {"ZCONTENT", 4}});
    sql("CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, ZOWNER, ZCONTENT)",
        {{"(Z_PK INTEGER PRIMARY KEY, a, b)", "(7, 70, 'deleted text'), (8, 80, 'more of it')"}});
    BodiesProbe empty(state);
    empty.DoRecoveryPath(database);
    EXPECT_TRUE(empty.RecoveredFiltered.empty());
    sql("INSERT INTO ZNOTEBODY VALUES (1, 10, 12)");
    BodiesProbe bodies(state);
    bodies.DoRecoveryPath(database);
    EXPECT_EQ(bodies.RecoveredFiltered.size(), 2U);

    bodies.RecoveredFiltered.clear();
    for (const Text& content : {Text("12"), Text("13"), Text("two words"), Text()}) {
        auto body = std::make_shared<NoteBody>();
        body->Content = content;
        bodies.RecoveredData.push_back(body);
    }
    bodies.filterMessages();
    EXPECT_THAT(textsOf(bodies.RecoveredFiltered, &NoteBody::Content),
                ElementsAre("13", "two words", "-"));
}

TEST_F(NotesCarvers, TheNoteStoreVariantTakesItsPatternsFromItsOwnTable) {
    signature("notes.sqlite", "ZICNOTEDATA", "[1];[1];[0];[1,2];[-12]",
              {{"ZNOTE", 3}, {"ZDATA", 4}});
    sql("CREATE TABLE ZICNOTEDATA (Z_PK INTEGER PRIMARY KEY, ZNOTE, ZDATA)",
        {{"(Z_PK INTEGER PRIMARY KEY, a, b)", "(3, 30, 'deleted text'), (4, 40, 'more of it')"}});
    const auto carved = [this](const std::filesystem::path& path) {
        StoreProbe store(state);
        store.DoRecovery(path);
        Texts bodies;
        for (const auto& record : store.RecoveredFiltered) {
            const auto& body = dynamic_cast<const NoteBody&>(*record);
            bodies.push_back(joined({std::to_string(body.Owner), body.Content}));
        }
        return bodies;
    };
    EXPECT_THAT(carved(database), ElementsAre()) << "no live row";
    sql("INSERT INTO ZICNOTEDATA VALUES (1, 10, 'live')");
    EXPECT_THAT(carved(database), UnorderedElementsAre("30|deleted text", "40|more of it"));
    EXPECT_THAT(carved(folder / "missing"), ElementsAre());
}

TEST_F(NotesCarvers, TheNoteStoreVariantTakesEmptyValuesAndThoseOfAnyLength) {
    const std::vector<std::uint8_t> types{0, 4, 12, 13, 14, 41};
    const std::pair<const char*, std::vector<std::uint8_t>> cases[] = {
        {"12", {12, 13}},         {"13", {12, 13}},  {"-1", {12, 13, 14, 41}},
        {"-2", {12, 13, 14, 41}}, {"-13", {14, 41}}, {"4", {4}}};
    for (const auto& [code, taken] : cases) {
        StoreProbe store(state);
        store.tablePatterns = {makePattern(std::string("[1];[1];[0];[") + code + "]")};
        std::vector<std::uint8_t> found;
        for (const std::uint8_t type : types) {
            // Row id 130, two bytes that nobody looks at, the column; no other place fits.
            const std::vector<std::uint8_t> data{0x81, 2, 9, 9, type, 9, 9, 9, 9, 9, 9, 9, 9, 9};
            const auto header = store.FindSQLiteTableHeader(data, 0);
            if (!header || !header->Valid) continue;
            found.push_back(type);
            EXPECT_EQ(header->RowId, 130);
        }
        EXPECT_EQ(found, taken) << code;
    }
}

TEST_F(NotesCarvers, GzipDataBeginsWithItsMagicAndHasAWholeHeader) {
    const std::pair<std::vector<std::uint8_t>, bool> cases[] = {
        {{0x1F, 0x8B, 8, 0, 1, 2, 3, 4}, true},
        {{0x1F, 0x8B, 8, 0, 1, 2, 3}, false},
        {{0x1F, 0x8B, 8, 8, 1, 2, 3, 4}, false},  // a header with a file name
        {{}, false}};
    for (const auto& [data, gzip] : cases)
        EXPECT_EQ(NoteBodiesIOS9SQLiteRecovery::IsGzipHeaderValue(data), gzip) << data.size();
}

}  // namespace
}  // namespace salvor
