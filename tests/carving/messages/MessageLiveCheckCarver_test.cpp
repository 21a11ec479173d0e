#include "carving/MessageLiveCheckCarver.h"

#include "carving/MessagesIOS4SQLiteRecovery.h"
#include "carving/MessagesIOS5_6SQLiteRecovery.h"
#include "tests/carving/messages/MessageDatabase.h"

namespace salvor::testing {
namespace {

class LiveCheck : public MessageScan {
  protected:
    LiveCheck() {
        database.makeGroupLayout();
        database.insert("message", groupMessageRow(1, "+15550100", "12345"));
    }

    static std::shared_ptr<Message> message(const Text& text, double date) {
        auto made = std::make_shared<Message>();
        made->Text = text;
        made->OriginalDate = date;
        return made;
    }
};

TEST_F(LiveCheck, KeepsWhatHasTextAndDateAndNoLiveRow) {
    const auto asLive = groupMessageRow(3, "+15550102", "12345");
    const auto noText = groupMessageRow(4, "+15550103", "");
    const auto noDate = groupMessageRow(5, "+15550104", "zero", 0);
    database.insertDeleted(kGroupMessageColumns, groupMessageRow(2, "+15550101", "gone") + "," +
                                                     asLive + "," + noText + "," + noDate);
    database.freeDeleted();
    MessagesIOS5_6SQLiteRecovery carver(state);
    carver.DoRecoveryPath(database.path);
    EXPECT_EQ(carver.RecoveredData.size(), 4U);
    const auto kept = as<Message>(carver.RecoveredFiltered);
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0]->Text, "gone");
    EXPECT_EQ(kept[0]->Address, "+15550101");
    EXPECT_EQ(kept[0]->Flags, 33);
    EXPECT_TRUE(kept[0]->IsFromMe);
}

TEST_F(LiveCheck, NarrowsTheSharedSignature) {
    const auto signature = state.recoverySignatures->Find("HomeDomain", "sms.db", "MESSAGE");
    carve<MessagesIOS5_6SQLiteRecovery>();
    ASSERT_EQ(signature->TablePatterns.size(), 1U);
    EXPECT_TRUE(signature->TablePatterns[0]->CheckIfVersionSupported("iOS6"));
    carve<MessagesIOS4SQLiteRecovery>();
    EXPECT_TRUE(signature->TablePatterns.empty());
}

TEST_F(LiveCheck, ListStaysWhenTheDatabaseDoesNotOpen) {
    MessagesIOS4SQLiteRecovery carver(state);
    carver.RecoveredFiltered.push_back(message("kept", 0));
    carver.CheckIfinDB(database.folder / "missing");
    EXPECT_EQ(carver.RecoveredFiltered.size(), 1U);
    carver.CheckIfinDB(database.path);
    EXPECT_TRUE(carver.RecoveredFiltered.empty());
}

TEST_F(LiveCheck, TextsBelowZeroDateAreLookedUpAlone) {
    MessagesIOS4SQLiteRecovery carver(state);
    carver.RecoveredData = {message("12345", -1), message("12345", 400000001)};
    carver.CheckIfinDB(database.path);
    ASSERT_EQ(carver.RecoveredFiltered.size(), 1U);
    EXPECT_EQ(carver.RecoveredFiltered[0], carver.RecoveredData[1]);
}

TEST_F(LiveCheck, HostileTextsEndQuietly) {
    const char* texts[] = {
        "1; DROP TABLE message",
        "1; ATTACH DATABASE 'other.db' AS other",
        "(WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM n) SELECT count(*) FROM n) --",
        "1' OR '",
        "load_extension('evil')",
    };
    const auto before = database.bytes();
    MessagesIOS5_6SQLiteRecovery carver(state);
    for (const auto* text : texts) carver.RecoveredData.push_back(message(text, 400000000));
    carver.CheckIfinDB(database.path);
    EXPECT_EQ(carver.RecoveredFiltered, carver.RecoveredData);
    EXPECT_EQ(database.bytes(), before);
}

}  // namespace
}  // namespace salvor::testing
