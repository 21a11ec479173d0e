#include <algorithm>
#include <fmt/ranges.h>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <optional>
#include <set>

#include "scan/Categories.h"
#include "tests/app/SampleScan.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

using Keys = std::multiset<std::string>;
using KeysOf = std::function<Keys(const ScanState&)>;

std::string shown(const auto& text) {
    return text.value_or("");
}
std::string shown(std::int32_t number) {
    return std::to_string(number);
}

/// These fields of a list's rows, joined.
template <class Row, class... Fields>
KeysOf keysOf(ListField<Row> list, Fields... fields) {
    return [=](const ScanState& state) {
        Keys keys;
        for (const auto& row : state.*list)
            keys.insert(fmt::format("{}", fmt::join({shown((*row).*fields)...}, "|")));
        return keys;
    };
}

std::string keyOfText(const TruthRow& row) {
    return shown(row.text);
}

std::string keyOfRow(const TruthRow& row) {
    return std::to_string(row.rowId);
}

std::string keyOfEntry(const TruthRow& row) {
    return shown(row.text) + "|" + row.handle;
}

std::string keyOfVisit(const TruthRow& row) {
    const Date date{static_cast<double>(row.date)};
    return row.handle + "|" + shown(row.text) + "|" + DateUtils::DateTimeToString(date) + "|" +
           std::to_string(std::get<std::int64_t>(row.values.at("visits")));
}

using Floors = std::map<int, std::size_t>;

/// Lists of a scan and what of the truth belongs to them.
struct Case {
    std::string table;
    std::string (*keyOfTruth)(const TruthRow&);
    std::optional<Category> category;
    KeysOf live;
    KeysOf deleted;  ///< none where nothing deleted is looked for or other tests compare it
    /// By generation: of the deleted rows whose text still lies in the file so many per cent come
    /// back, floors a little below what was measured. Without an entry none does.
    Floors floors;

    Case withDeleted(KeysOf keys) && {
        deleted = std::move(keys);
        return std::move(*this);
    }
};

/// Calls and events moved to other tables between the generations.
bool belongsTo(const std::string& table, int ios) {
    if (table == "call") return ios < 8;
    if (table == "ZCALLRECORD") return ios >= 8;
    if (table == "CalendarItem") return ios >= 5;
    return table != "Event" || ios < 5;
}

/// The rows of a category, told by these fields.
template <class Row, class... Fields>
Case of(Category category, const char* table, std::string (*keyOfTruth)(const TruthRow&),
        Floors floors, Fields... fields) {
    const RowKind& kind = factsOf(category).kinds.front();
    return {table,
            keyOfTruth,
            category,
            keysOf<Row>(std::get<ListField<Row>>(kind.live.field), fields...),
            keysOf<Row>(std::get<ListField<Row>>(kind.deleted.field), fields...),
            std::move(floors)};
}

/// A list that belongs to no category.
template <class Row, class... Fields>
Case of(ListField<Row> list, const char* table, std::string (*keyOfTruth)(const TruthRow&),
        Fields... fields) {
    return {table, keyOfTruth, std::nullopt, keysOf<Row>(list, fields...), {}, {}};
}

const std::vector<Case>& cases() {
    using S = ScanState;
    using Visit = InternetHistory;
    using App = Application;
    static const std::vector<Case> all{
        of<SMS>(Category::Messages, "message", keyOfRow, {}, &SMS::RowID).withDeleted({}),
        of<Contact>(Category::Contacts, "ABPerson", keyOfEntry, {{6, 55}, {7, 55}, {8, 55}},
                    &Contact::FirstName, &Contact::ContactNo1)
            .withDeleted(
                keysOf<Contact>(&S::DeletedContact, &Contact::FirstName, &Contact::C15Phone)),
        of<CallLog>(Category::Calls, "call", keyOfText, {{5, 85}, {6, 85}, {7, 75}},
                    &CallLog::Address),
        of<CallLog>(Category::Calls, "ZCALLRECORD", keyOfText, {{8, 90}}, &CallLog::Address),
        of<Calendar>(Category::Calendar, "CalendarItem", keyOfText,
                     {{5, 90}, {6, 90}, {7, 90}, {8, 90}}, &Calendar::Summary),
        of<Calendar>(Category::Calendar, "Event", keyOfText, {}, &Calendar::Summary),
        of<Note>(Category::Notes, "ZNOTE", keyOfText, {{4, 15}, {5, 15}, {6, 15}, {7, 60}, {8, 60}},
                 &Note::Title),
        of<WhatsApp>(Category::WhatsApp, "ZWAMESSAGE", keyOfText,
                     {{4, 85}, {5, 85}, {6, 85}, {7, 85}, {8, 85}}, &WhatsApp::zText),
        of<Visit>(Category::Internet, "history_visits", keyOfVisit, {}, &Visit::Url, &Visit::Title,
                  &Visit::LastVisitedDate, &Visit::VisitCount),
        of<Account>(&S::AccountContent, "Accounts", keyOfEntry, &Account::Username,
                    &Account::ClassName, &Account::Hostname, &Account::PortNumber),
        of<App>(&S::ApplicationContent, "Applications", keyOfEntry, &App::ApplicationName,
                &App::BundleIdentifer, &App::BundleVersion),
        of<MapHistory>(&S::MapContent, "HistoryItems", keyOfEntry, &MapHistory::Query,
                       &MapHistory::Location),
        of<UserDict>(&S::UserDictContent, "words", keyOfText, &UserDict::UserKey),
    };
    return all;
}

class EveryCategory : public testing::TestWithParam<int> {
  protected:
    /// Scans a sample of this generation, which stays as it is.
    void scan(SampleOptions options, int ios) {
        options.ios = ios;
        sample = SampleBackup::write(folder / "backup", options);
        const auto before = hashTree(sample.folder);
        auto request = requestFor(sample.folder);
        request.workFolder = folder / "work";
        ASSERT_EQ(job.run(request), ScanResult::Done);
        EXPECT_EQ(hashTree(sample.folder), before);
        EXPECT_FALSE(job.state().fileOutcomes.anyFault());
    }

    std::vector<TruthRow> live(const std::string& table) const {
        return SampleTruth::of(sample.truth.live, table);
    }

    void checkLive(const Case& category) {
        Keys expected;
        auto rows = live(category.table);
        if (category.table == "ZNOTE") {
            for (auto& row : live("ZICNOTEDATA")) rows.push_back(std::move(row));
        }
        for (auto& row : rows) {
            // The statement for older messages tells no row id.
            if (category.table == "message" && sample.truth.ios < 6) row.rowId = 0;
            expected.insert(category.keyOfTruth(row));
        }
        EXPECT_EQ(category.live(job.state()), expected) << category.table;
    }

    void checkDeleted(const Case& category) {
        // What names and numbers people had is found in the table of the full-text search.
        const bool contacts = category.table == "ABPerson";
        const auto rows = SampleTruth::of(
            sample.truth.deleted, contacts ? "ABPersonFullTextSearch_content" : category.table);
        if (rows.empty() || !category.deleted) return;
        const auto bytes = readWholeFile(sample.folder / rows.front().database);
        const Keys found = category.deleted(job.state());
        std::size_t present = 0;
        std::size_t exact = 0;
        for (const auto& row : rows) {
            const bool whole = bytes.find(shown(row.text)) != std::string::npos &&
                               bytes.find(row.handle) != std::string::npos;
            present += whole ? 1U : 0U;
            exact += found.count(category.keyOfTruth(row)) != 0 ? 1U : 0U;
        }
        const auto floor = category.floors.find(sample.truth.ios);
        EXPECT_EQ(exact > 0, floor != category.floors.end())
            << category.table << ' ' << exact << " of " << present;
        if (floor == category.floors.end()) return;
        EXPECT_GE(100 * exact, floor->second * present)
            << category.table << ": " << exact << " of " << present;
    }

    /// The names of the files that lie in the backup itself, as the photo library lists them.
    template <class Media>
    Keys storedIn(const List<Media>& list) const {
        Keys names;
        for (const auto& item : list) {
            const std::filesystem::path file = item->Location.value_or("");
            if (file.parent_path() != sample.folder) continue;
            EXPECT_TRUE(std::filesystem::exists(file)) << file;
            names.insert(file.filename().string());
        }
        return names;
    }

    // A sweep lists copies. The photo library adds the files themselves: as deleted what lies in
    // the trash, what a computer sent and every video. Kept: videos-count-as-deleted.
    void checkPictures(const ScanState& state) const {
        std::set<std::string> photos;
        Keys listed, deleted, deletedVideos;
        for (const char* table : {"ZGENERICASSET", "Photo"}) {
            for (const auto& row : live(table)) {
                const bool trashed = row.values.at("trashed") == SqliteValue{std::int64_t{1}};
                if (shown(row.text).ends_with(".MOV")) {
                    deletedVideos.insert(row.handle);
                } else if (photos.insert(row.handle).second) {
                    const bool sent = shown(row.text).starts_with("PhotoData/Sync");
                    (trashed || sent ? deleted : listed).insert(row.handle);
                }
            }
        }
        EXPECT_FALSE(listed.empty() || deleted.empty() || deletedVideos.empty());
        EXPECT_EQ(storedIn(state.Photos), listed);
        EXPECT_EQ(storedIn(state.DeletedPhotos), deleted);
        EXPECT_EQ(storedIn(state.DeletedVideos), deletedVideos);
        EXPECT_EQ(state.Photos.size() - listed.size(), live("Photos").size());
        EXPECT_EQ(state.Videos.size(), live("Videos").size());
        EXPECT_EQ(static_cast<std::size_t>(state.PhotosCount), state.Photos.size());
        EXPECT_EQ(static_cast<std::size_t>(state.DeletedVideosCount), deletedVideos.size());
    }

    TempFolder folder;
    SampleBackup sample;
    SampleScan job;
};

TEST_P(EveryCategory, ShowsItsLiveRowsAndWhatIsLeftOfTheDeletedOnes) {
    scan({}, GetParam());
    EXPECT_EQ(job.state().deviceInfo.iOSMajorVersion, GetParam());
    for (const Case& category : cases()) {
        if (!belongsTo(category.table, GetParam())) continue;
        checkLive(category);
        checkDeleted(category);
    }
    checkPictures(job.state());
}

TEST(AllCategories, AreComparedWithTheTruth) {
    std::set<Category> compared{Category::Photos};  // by `checkPictures`
    for (const Case& one : cases()) {
        if (one.category) compared.insert(*one.category);
    }
    EXPECT_EQ(compared.size(), kCategoryCount);
}

INSTANTIATE_TEST_SUITE_P(Generations, EveryCategory, testing::Values(4, 5, 6, 7, 8, 9));

using NewerNotes = EveryCategory;

// From iOS 9 on the carvers look for the tables of the older notes in the newer store, which has
// none of them, so that no deleted note is found though both files still hold some.
TEST_P(NewerNotes, ComeFirstWithTheirTextsAndWithoutDeletedOnes) {
    scan({.secureDelete = false}, GetParam());
    const auto newer = live("ZICNOTEDATA");
    const auto older = live("ZNOTE");
    const auto& notes = job.state().NotesContent;
    ASSERT_EQ(notes.size(), newer.size() + older.size());
    EXPECT_EQ(static_cast<std::size_t>(job.state().NoteCount), notes.size());
    for (std::size_t i = 0; i < newer.size(); ++i) {
        EXPECT_EQ(notes[i]->Title, newer[i].text);
        ASSERT_NE(notes[i]->noteBody, nullptr);
        EXPECT_EQ(notes[i]->noteBody->Content, newer[i].handle);
        const Date date{static_cast<double>(newer[i].date)};
        EXPECT_EQ(notes[i]->CreatedDate, DateUtils::DateTimeToString(date));
    }
    EXPECT_EQ(notes[newer.size()]->Title, older[0].text);
    EXPECT_TRUE(job.state().DeletedNotes.empty());
    EXPECT_EQ(job.state().DeletedNoteCount, 0);
    for (const char* table : {"ZICNOTEDATA", "ZNOTE"}) {
        const auto deleted = SampleTruth::of(sample.truth.deleted, table);
        EXPECT_TRUE(std::any_of(deleted.begin(), deleted.end(), [&](const TruthRow& row) {
            return readWholeFile(sample.folder / row.database).find(*row.text) != std::string::npos;
        })) << table;
    }
}

INSTANTIATE_TEST_SUITE_P(Generations, NewerNotes, testing::Values(9));

}  // namespace
}  // namespace salvor
