#include "backup/extraction/CategoryExtraction.h"

#include <gmock/gmock.h>

#include "backup/BackupSource.h"
#include "backup/extraction/CategoryDatabases.h"
#include "backup/extraction/LiveCategories.h"
#include "scan/StoredNames.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {
namespace {

class Extraction : public testing::Test {
  protected:
    Extraction() {
        std::filesystem::create_directories(backup);
        useBackup(state, backup);
        state.deviceInfo.iOSMajorVersion = 7;
    }
    /// A message database with `count` messages of one handle.
    void writeMessages(int count) const {
        SqliteFile database(backup / MessagesSqliteDbName, {});
        database.execute("CREATE TABLE handle (id TEXT)");
        database.execute(
            "CREATE TABLE message (attributedBody BLOB, text TEXT, date INTEGER, error INTEGER, "
            "is_from_me INTEGER, handle_id INTEGER, guid TEXT)");
        for (int i = 0; i < count; ++i) {
            database.execute("INSERT INTO message (text, date) VALUES ('hello', 1)");
        }
    }
    ExtractionResult extract(std::int32_t dataType) {
        WorkFolder work(folder / "work");
        CategoryExtraction extraction(state, &work);
        extraction.prepare(dataType);
        return extraction.read(dataType);
    }
    std::vector<std::string> statuses() const {
        std::vector<std::string> texts;
        for (const auto& [code, text] : state.statusHistory())
            texts.push_back(std::to_string(static_cast<int>(code)) + " " + text);
        return texts;
    }

    TempFolder folder;
    std::filesystem::path backup = folder / "backup";
    ScanState state;
};

TEST_F(Extraction, NamesItsDatabasesByTheVersion) {
    using enum Stored;
    const struct {
        std::int32_t major;
        Stored calls, words, pages;
    } cases[] = {{0, CallsBefore8, WordsBefore5, SafariPagesBefore7},
                 {4, CallsBefore8, WordsBefore5, SafariPagesBefore7},
                 {5, CallsBefore8, WordsFrom5, SafariPagesBefore7},
                 {6, CallsBefore8, WordsFrom5, SafariPagesBefore7},
                 {7, CallsBefore8, WordsFrom5, SafariPagesFrom7},
                 {8, CallsFrom8, WordsFrom5, SafariPagesFrom7}};
    for (const auto& [major, calls, words, pages] : cases) {
        // Without the WhatsApp file its name and Safari's change, on every version.
        for (const bool whatsApp : {true, false}) {
            writeWholeFile(backup / WhatsAppSqliteDbName, whatsApp ? "x" : "");
            state.deviceInfo.iOSMajorVersion = major;
            setupDataBase(state);
            EXPECT_EQ(state.CALLHISTORY_DATABASE, storedNameOf(calls)) << major;
            EXPECT_EQ(state.DYNAMICDIT_DATABASE, storedNameOf(words)) << major;
            EXPECT_EQ(state.INTERNET_HISTROY_DATABASE,
                      storedNameOf(whatsApp ? pages : SafariSuspendState));
            EXPECT_EQ(state.WHATSAPP_DATABASE,
                      whatsApp ? WhatsAppSqliteDbName : WhatsAppSqliteDbName2);
        }
    }
    EXPECT_EQ(state.KEYCHAIN_DATABASE, storedNameOf(Keychain)) << "which nothing else reads";
}

// Kept: four-gib-is-empty.
TEST_F(Extraction, AWhatsAppFileOf4GiBCountsAsEmpty) {
    writeWholeFile(backup / WhatsAppSqliteDbName, "x");
    std::filesystem::resize_file(backup / WhatsAppSqliteDbName, std::uintmax_t{1} << 32);
    setupDataBase(state);
    EXPECT_EQ(state.WHATSAPP_DATABASE, WhatsAppSqliteDbName2);
    std::filesystem::resize_file(backup / WhatsAppSqliteDbName, (std::uintmax_t{1} << 32) + 1);
    setupDataBase(state);
    EXPECT_EQ(state.WHATSAPP_DATABASE, WhatsAppSqliteDbName);
}

// Kept: message-count-for-most. A scan of one category alone finds the number where an earlier one
// left it.
TEST_F(Extraction, ReadsTheWantedCategoriesAndShowsTheMessageCountForMost) {
    writeMessages(3);
    const std::pair<std::int32_t, std::vector<std::string>> cases[] = {
        {3, {"0 Contacts", "3 0 Contacts Retreived"}},
        {1, {"0 SMS", "3 3 SMS Retreived"}},
        {3, {"0 Contacts", "3 3 Contacts Retreived"}},
        {4, {"0 Call History", "3 0 CallHistory Retreived"}},
        {5, {"0 WhatsApp", "3 0 WhatsApp Retreived"}},
        {6, {"0 Notes", "3 3 Notes Retreived"}},
        {7, {}},
        {8, {"0 Calendar", "3 3 Calendar Retreived"}},
        {9, {}},
        {2, {"0 Photos & Videos... "}},
        {0,
         {"0 Photos & Videos... ", "0 SMS", "3 3 SMS Retreived", "0 Contacts",
          "3 3 Contacts Retreived", "0 Call History", "3 0 CallHistory Retreived", "0 WhatsApp",
          "3 0 WhatsApp Retreived", "0 Notes", "3 3 Notes Retreived", "0 Calendar",
          "3 3 Calendar Retreived"}},
    };
    struct Listener : ScanObserver {
        const ScanState& state;
        std::vector<std::pair<int, std::size_t>> read;
        std::vector<std::int32_t> tabs;
        explicit Listener(const ScanState& heard) : state(heard) {}
        void onCategoryRead(Category category) override {
            read.emplace_back(codeOf(category), state.SMSContent.size());
        }
        void onTabSelected(Category category) override { tabs.push_back(codeOf(category)); }
        void onTabEnabled(Category category) override { tabs.push_back(10 * codeOf(category)); }
        void onTabButtons() override { tabs.push_back(0); }
    } listener(state);
    state.observer = &listener;
    for (const auto& [code, texts] : cases) {
        state.SMSContent.resize(code == 0 ? 0 : state.SMSContent.size());
        listener.read.clear();
        listener.tabs.clear();
        EXPECT_EQ(extract(code), ExtractionResult::Complete);
        EXPECT_EQ(statuses(), texts) << code << ": those of this scan alone";
        std::vector<std::int32_t> ownTab;  // selected, enabled, refreshed
        if (code != 0 && texts.size() > 1) ownTab = {code, 10 * code, 0};
        EXPECT_EQ(listener.tabs, ownTab) << code;
        EXPECT_EQ(std::filesystem::exists(folder / "work/Temp/Photos"), code == 2 || code == 0);
    }
    EXPECT_EQ(state.SMSCount, 3);
    EXPECT_THAT(listener.read,
                testing::ElementsAre(std::pair(1, 3), std::pair(3, 3), std::pair(4, 3),
                                     std::pair(5, 3), std::pair(6, 3), std::pair(8, 3)))
        << "in the order of reading, when the list is complete";
}

TEST_F(Extraction, TheRecoveryBeginsWithFiveEmptyLists) {
    const auto lists = std::tie(state.DeletedSMS, state.DeletedContact, state.DeletedCallLog,
                                state.DeletedCalendar, state.DeletedWhatsApp, state.DeletedNotes);
    std::apply([](auto&... list) { (list.resize(1), ...); }, lists);
    clearDeletedLists(state);
    EXPECT_THAT(std::apply([](auto&... list) { return std::vector{list.size()...}; }, lists),
                testing::ElementsAre(0, 0, 0, 0, 0, 1));
}

TEST_F(Extraction, ReplacesWhatAnEarlierScanLeft) {
    writeMessages(2);
    extract(1);
    state.DeletedSMS.resize(5);
    state.DeletedSMSCount = 5;
    state.unKnownCount = 9;
    extract(1);
    EXPECT_EQ(state.SMSContent.size(), 2u);
    EXPECT_EQ(state.AllSMSContent.size(), 2u);
    EXPECT_TRUE(state.DeletedSMS.empty());
    EXPECT_EQ(state.DeletedSMSCount, 0);
    EXPECT_EQ(state.unKnownCount, 0);
}

TEST_F(Extraction, NeedsAPlaceForThePictures) {
    std::filesystem::create_directories(folder / "work/Temp");
    EXPECT_EQ(extract(2), ExtractionResult::NoWorkFolder);
    EXPECT_EQ(extract(1), ExtractionResult::Complete);
}

}  // namespace
}  // namespace salvor
