#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <set>

#include "app/ScanJob.h"
#include "app/state/ScanState.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

using Keys = std::multiset<std::string>;

template <class Row, class KeyOf>
Keys keysOf(const List<Row>& rows, KeyOf keyOf) {
    Keys keys;
    for (const auto& row : rows) keys.insert(keyOf(*row));
    return keys;
}

/// One list pair of a scan and what of the truth belongs to it.
struct Category {
    const char* name;
    const char* liveTable;
    const char* deletedTable;
    std::function<std::string(const TruthRow&)> keyOfTruth;
    std::function<Keys(const ScanState&)> live;
    std::function<Keys(const ScanState&)> deleted;
    const char* newerTable = "";  ///< further live rows of the list
};

std::string textOf(const TruthRow& row) {
    return row.text.value_or("");
}

std::string keyOfVisit(const TruthRow& row) {
    const Date date{static_cast<double>(row.date)};
    return row.handle + "|" + textOf(row) + "|" + DateUtils::DateTimeToString(date) + "|" +
           std::to_string(std::get<std::int64_t>(row.values.at("visits")));
}

std::string keyOfEntry(const TruthRow& row) {
    return textOf(row) + "|" + row.handle;
}

const std::vector<Category>& categories() {
    static const auto nothing = [](const ScanState&) { return Keys(); };
    static const auto visits = [](const auto& row) {
        return row.Url.value_or("") + "|" + row.Title.value_or("") + "|" +
               row.LastVisitedDate.value_or("") + "|" + std::to_string(row.VisitCount);
    };
    static const auto calls = [](const auto& row) { return row.Address.value_or(""); };
    static const auto titles = [](const auto& row) { return row.Title.value_or(""); };
    static const auto summaries = [](const auto& row) { return row.Summary.value_or(""); };
    static const auto texts = [](const auto& row) { return row.zText.value_or(""); };
    static const std::vector<Category> all{
        {"contacts", "ABPerson", "ABPersonFullTextSearch_content", keyOfEntry,
         [](const ScanState& s) {
             return keysOf(s.ContactContent, [](const Contact& row) {
                 return row.FirstName.value_or("") + "|" + row.ContactNo1.value_or("");
             });
         },
         [](const ScanState& s) {
             return keysOf(s.DeletedContact, [](const Contact& row) {
                 return row.FirstName.value_or("") + "|" + row.C15Phone.value_or("");
             });
         }},
        {"calls", "call", "call", textOf,
         [](const ScanState& s) { return keysOf(s.CallLogContent, calls); },
         [](const ScanState& s) { return keysOf(s.DeletedCallLog, calls); }},
        {"newer calls", "ZCALLRECORD", "ZCALLRECORD", textOf,
         [](const ScanState& s) { return keysOf(s.CallLogContent, calls); },
         [](const ScanState& s) { return keysOf(s.DeletedCallLog, calls); }},
        {"calendar", "CalendarItem", "CalendarItem", textOf,
         [](const ScanState& s) { return keysOf(s.CalendarContent, summaries); },
         [](const ScanState& s) { return keysOf(s.DeletedCalendar, summaries); }},
        {"older calendar", "Event", "Event", textOf,
         [](const ScanState& s) { return keysOf(s.CalendarContent, summaries); },
         [](const ScanState& s) { return keysOf(s.DeletedCalendar, summaries); }},
        {"notes", "ZNOTE", "ZNOTE", textOf,
         [](const ScanState& s) { return keysOf(s.NotesContent, titles); },
         [](const ScanState& s) { return keysOf(s.DeletedNotes, titles); }, "ZICNOTEDATA"},
        {"WhatsApp", "ZWAMESSAGE", "ZWAMESSAGE", textOf,
         [](const ScanState& s) { return keysOf(s.WhatsAppContent, texts); },
         [](const ScanState& s) { return keysOf(s.DeletedWhatsApp, texts); }},
        {"browser history", "history_visits", "history_visits", keyOfVisit,
         [](const ScanState& s) { return keysOf(s.InternetContent, visits); },
         [](const ScanState& s) { return keysOf(s.DeletedInternet, visits); }},
        {"accounts", "Accounts", "Accounts", keyOfEntry,
         [](const ScanState& s) {
             return keysOf(s.AccountContent, [](const Account& row) {
                 return row.Username.value_or("") + "|" + row.ClassName.value_or("") + "|" +
                        row.Hostname.value_or("") + "|" + row.PortNumber.value_or("");
             });
         },
         nothing},
        {"applications", "Applications", "Applications", keyOfEntry,
         [](const ScanState& s) {
             return keysOf(s.ApplicationContent, [](const Application& row) {
                 return row.ApplicationName.value_or("") + "|" + row.BundleIdentifer.value_or("") +
                        "|" + row.BundleVersion.value_or("");
             });
         },
         nothing},
        {"map history", "HistoryItems", "HistoryItems", keyOfEntry,
         [](const ScanState& s) {
             return keysOf(s.MapContent, [](const MapHistory& row) {
                 return row.Query.value_or("") + "|" + row.Location.value_or("");
             });
         },
         nothing},
        {"keyboard dictionary", "words", "words", textOf,
         [](const ScanState& s) {
             return keysOf(s.UserDictContent,
                           [](const UserDict& row) { return row.UserKey.value_or(""); });
         },
         nothing},
    };
    return all;
}

/// Of the deleted rows whose text still lies in the file so many per cent come back, floors a
/// little below what was measured. Without an entry none does, by rule.
const std::map<std::pair<std::string, int>, std::size_t> kFloors{
    {{"contacts", 6}, 55}, {{"contacts", 7}, 55}, {{"contacts", 8}, 55},    {{"calls", 5}, 85},
    {{"calls", 6}, 85},    {{"calls", 7}, 75},    {{"newer calls", 8}, 90}, {{"calendar", 5}, 90},
    {{"calendar", 6}, 90}, {{"calendar", 7}, 90}, {{"calendar", 8}, 90},    {{"notes", 4}, 15},
    {{"notes", 5}, 15},    {{"notes", 6}, 15},    {{"notes", 7}, 60},       {{"notes", 8}, 60},
    {{"WhatsApp", 4}, 85}, {{"WhatsApp", 5}, 85}, {{"WhatsApp", 6}, 85},    {{"WhatsApp", 7}, 85},
    {{"WhatsApp", 8}, 85},
};

/// Calls and events moved to other tables between the generations.
bool belongsTo(const std::string& category, int ios) {
    if (category == "calls") return ios < 8;
    if (category == "newer calls") return ios >= 8;
    if (category == "calendar") return ios >= 5;
    if (category == "older calendar") return ios < 5;
    return true;
}

class EveryCategory : public testing::TestWithParam<int> {
  protected:
    void checkLive(const Category& category, const ScanState& state) const {
        Keys expected;
        for (const auto& row : sample.truth.live) {
            const bool belongs =
                row.table == category.liveTable || row.table == category.newerTable;
            if (belongs) expected.insert(category.keyOfTruth(row));
        }
        // The statement for older calls names a column that iOS 4 lacks, so that it gives none.
        if (GetParam() == 4 && std::string(category.name) == "calls") expected.clear();
        EXPECT_EQ(category.live(state), expected) << category.name;
    }

    void checkDeleted(const Category& category, const ScanState& state) const {
        const auto rows = SampleTruth::of(sample.truth.deleted, category.deletedTable);
        if (rows.empty()) return;
        const auto bytes = readWholeFile(sample.folder / rows.front().database);
        const Keys found = category.deleted(state);
        std::size_t present = 0;
        std::size_t exact = 0;
        for (const auto& row : rows) {
            const bool whole = bytes.find(textOf(row)) != std::string::npos &&
                               bytes.find(row.handle) != std::string::npos;
            present += whole ? 1U : 0U;
            exact += found.count(category.keyOfTruth(row)) != 0 ? 1U : 0U;
        }
        const auto floor = kFloors.find({category.name, GetParam()});
        if (floor == kFloors.end()) {
            EXPECT_EQ(exact, 0U) << category.name;
        } else {
            EXPECT_GT(exact, 0U) << category.name;
            EXPECT_GE(100 * exact, floor->second * present)
                << category.name << ": " << exact << " of " << present;
        }
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
    // the trash, what a computer sent and, deliberately, every video.
    void checkPictures(const ScanState& state) const {
        std::set<std::string> photos;
        Keys live, deleted, deletedVideos;
        for (const char* table : {"ZGENERICASSET", "Photo"}) {
            for (const auto& row : SampleTruth::of(sample.truth.live, table)) {
                const bool trashed = row.values.at("trashed") == SqliteValue{std::int64_t{1}};
                if (textOf(row).ends_with(".MOV")) {
                    deletedVideos.insert(row.handle);
                } else if (photos.insert(row.handle).second) {
                    const bool sent = textOf(row).starts_with("PhotoData/Sync");
                    (trashed || sent ? deleted : live).insert(row.handle);
                }
            }
        }
        EXPECT_FALSE(live.empty() || deleted.empty() || deletedVideos.empty());
        EXPECT_EQ(storedIn(state.Photos), live);
        EXPECT_EQ(storedIn(state.DeletedPhotos), deleted);
        EXPECT_EQ(storedIn(state.DeletedVideos), deletedVideos);
        const auto& truth = sample.truth.live;
        EXPECT_EQ(state.Photos.size() - live.size(), SampleTruth::of(truth, "Photos").size());
        EXPECT_EQ(state.Videos.size(), SampleTruth::of(truth, "Videos").size());
        EXPECT_EQ(static_cast<std::size_t>(state.PhotosCount), state.Photos.size());
        EXPECT_EQ(static_cast<std::size_t>(state.DeletedVideosCount), deletedVideos.size());
    }

    TempFolder folder;
    SampleBackup sample;
};

TEST_P(EveryCategory, ShowsItsLiveRowsAndWhatIsLeftOfTheDeletedOnes) {
    SampleOptions options;
    options.ios = GetParam();
    sample = SampleBackup::write(folder / "backup", options);
    const auto before = hashTree(sample.folder);
    ScanObserver nobody;
    ScanJob job(nobody);
    ScanRequest request;
    request.source = sample.folder;
    request.workFolder = folder / "work";
    request.signatures = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";
    ASSERT_EQ(job.runScan(request).result, ScanResult::Done);
    for (const Category& category : categories()) {
        if (!belongsTo(category.name, GetParam())) continue;
        checkLive(category, job.state());
        checkDeleted(category, job.state());
    }
    checkPictures(job.state());
    EXPECT_EQ(hashTree(sample.folder), before);
}

// From iOS 9 on the carvers look for the tables of the older notes in the newer store, which has
// none of them, so that no deleted note is found though both files still hold some.
TEST(NewerNotes, ComeFirstWithTheirTextsAndWithoutDeletedOnes) {
    TempFolder folder;
    SampleOptions options;
    options.ios = 9;
    options.secureDelete = false;
    const auto sample = SampleBackup::write(folder / "backup", options);
    ScanObserver nobody;
    ScanJob job(nobody);
    ScanRequest request;
    request.source = sample.folder;
    request.workFolder = folder / "work";
    request.signatures = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";
    ASSERT_EQ(job.runScan(request).result, ScanResult::Done);
    const auto newer = SampleTruth::of(sample.truth.live, "ZICNOTEDATA");
    const auto older = SampleTruth::of(sample.truth.live, "ZNOTE");
    const auto& notes = job.state().NotesContent;
    ASSERT_EQ(notes.size(), newer.size() + older.size());
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
        std::size_t left = 0;
        for (const auto& row : SampleTruth::of(sample.truth.deleted, table))
            left += readWholeFile(sample.folder / row.database).find(*row.text) != std::string::npos
                        ? 1U
                        : 0U;
        EXPECT_GT(left, 0U) << table;
    }
}

INSTANTIATE_TEST_SUITE_P(Generations, EveryCategory, testing::Values(4, 5, 6, 7, 8, 9));

}  // namespace
}  // namespace salvor
