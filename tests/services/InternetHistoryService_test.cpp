#include "services/InternetHistoryService.h"

#include "scan/StoredNames.h"
#include "tests/support/ScanFixture.h"
#include "tests/support/Told.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

constexpr auto kDatabase = storedNameOf(Stored::SafariHistory);
constexpr auto kNewerList = storedNameOf(Stored::SafariPagesFrom7);
constexpr auto kOlderList = storedNameOf(Stored::SafariPagesBefore7);
constexpr auto kSuspendState = storedNameOf(Stored::SafariSuspendState);

class BrowserHistory : public ScanFixture {
  protected:
    BrowserHistory() { state.INTERNET_HISTROY_DATABASE = kSuspendState; }

    /// The two tables with one page and the visits given as SQL rows.
    void database(const char* name, const std::string& visits) {
        write(name,
              "CREATE TABLE history_items (id INTEGER PRIMARY KEY, url, visit_count);"
              "CREATE TABLE history_visits (id INTEGER PRIMARY KEY, history_item INTEGER, "
              "visit_time, title);"
              "INSERT INTO history_items VALUES (1, 'https://a', 3);"
              "INSERT INTO history_visits VALUES " +
                  visits);
    }

    void propertyList(const char* name) {
        std::vector<PropertyListDictionary> dates;
        dates.emplace_back()
            .text("", "https://a")
            .text("title", "T")
            .text("lastVisitedDate", "60.5")
            .integer("visitCount", 3);
        dates.emplace_back()
            .text("lastVisitedDate", "soon")
            .integer("title", 1)
            .integer("visitCount", 1ULL << 40);
        dates.emplace_back().integer("visitCount", ~0ULL).real("lastVisitedDate", -1e300);
        PropertyListDictionary().array("WebHistoryDates", std::move(dates)).writeXml(folder / name);
    }

    /// Number, address, date, title and count of each row listed.
    Texts rows() {
        InternetHistoryService(state).RecoverFromIOSBackup(DeviceInfo{});
        Texts texts;
        for (const auto& row : state.InternetContent) {
            texts.push_back(joined({std::to_string(row->SlNo), row->Url, row->LastVisitedDate,
                                    row->Title, std::to_string(row->VisitCount)}));
            EXPECT_EQ(row->isChecked, 0);
        }
        return texts;
    }
};

TEST_F(BrowserHistory, ListsVisitsFromTheLatestOnAndEqualOnesByNumber) {
    database(kDatabase, "(4, 1, 60.5, 'b'), (2, 1, 60.5, NULL), (3, 1, 3600, ''), (5, 9, 1, 'x')");
    state.AllInternetContent = {std::make_shared<InternetHistory>()};
    state.AllDeletedInternet = {std::make_shared<InternetHistory>()};
    EXPECT_EQ(rows(),
              (Texts{"1|https://a|2001-01-01 01:00:00||3", "2|https://a|2001-01-01 00:01:00|-|3",
                     "3|https://a|2001-01-01 00:01:00|b|3"}));
    EXPECT_EQ(state.AllInternetContent, state.InternetContent);
    EXPECT_TRUE(state.AllDeletedInternet.empty());
    EXPECT_EQ(state.InternetCount, 3);
}

TEST_F(BrowserHistory, ListsAHistoryOfTwoPlacesTwice) {
    for (const char* name : {kDatabase, kNewerList, kOlderList}) database(name, "(1, 1, 60, 't')");
    EXPECT_EQ(rows(),
              (Texts{"1|https://a|2001-01-01 00:01:00|t|3", "2|https://a|2001-01-01 00:01:00|t|3",
                     "3|https://a|2001-01-01 00:01:00|t|3"}));
}

TEST_F(BrowserHistory, ReadsThePropertyListOfOlderVersions) {
    database(kNewerList, "(1, 1, 60, 't')");
    propertyList(kOlderList);
    EXPECT_EQ(rows(),
              (Texts{"1|https://a|2001-01-01 00:01:00|t|3", "2|https://a|2001-01-01 00:01:00|T|3",
                     "3|-|-|-|2147483647", "4|-|-|-|0"}));
}

// The scan's own name of the file follows the WhatsApp database; this service never asks for it.
TEST_F(BrowserHistory, LeavesTheOpenPagesAlone) {
    database(kSuspendState, "(1, 1, 60, 't')");
    EXPECT_EQ(rows(), Texts{});
}

TEST_F(BrowserHistory, BadFilesAreEmptyAndTheOthersWhole) {
    const std::string sound = [this] {
        database("sound", "(1, 1, 60, 't')");
        return readWholeFile(folder / "sound");
    }();
    propertyList("list");
    for (const auto& bad :
         {std::string(), std::string("x"), std::string(5000, '\xFF'), sound.substr(0, 4000),
          sound.substr(0, 100) + std::string(sound.size() - 100, '\0'), std::string("bplist00"),
          std::string("<plist><dict><key>WebHistoryDates</key><string/></dict></plist>"),
          std::string("<plist><array><dict/></array></plist>"),
          readWholeFile(folder / "list").substr(0, 300)}) {
        SCOPED_TRACE(bad.substr(0, 40));
        state.InternetContent.clear();
        writeWholeFile(folder / kDatabase, bad);
        writeWholeFile(folder / kNewerList, sound);
        EXPECT_EQ(rows(), Texts{"1|https://a|2001-01-01 00:01:00|t|3"});
    }
}

TEST_F(BrowserHistory, ValuesOfAnotherTypeDoNotStopTheList) {
    database(kDatabase, "(1, 1, 9e999, x'FF'), (2, 1, 'soon', 5), (3, 1, -1e18, 't')");
    EXPECT_EQ(rows().size(), 3U);
    EXPECT_EQ(state.InternetContent[0]->Title, Text("5")) << "a text sorts above every number";
    EXPECT_EQ(state.InternetContent[1]->LastVisitedDate, std::nullopt);
    EXPECT_EQ(state.InternetContent[1]->Title, std::nullopt);
}

}  // namespace
}  // namespace salvor
