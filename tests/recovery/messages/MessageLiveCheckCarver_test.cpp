#include "recovery/messages/MessageLiveCheckCarver.h"

#include "recovery/messages/MessagesIOS4SQLiteRecovery.h"
#include "recovery/messages/MessagesIOS5_6SQLiteRecovery.h"
#include "tests/support/MessageScan.h"

namespace salvor {
namespace {

using testing::ElementsAre;

class LiveCheck : public MessageScan {
  protected:
    LiveCheck() {
        makeGroupLayout();
        insert("message", groupMessageRow(1, "+15550100", "12345"));
    }

    static std::shared_ptr<Message> message(const Text& text, double date) {
        auto made = std::make_shared<Message>();
        made->Text = text;
        made->OriginalDate = date;
        return made;
    }
};

TEST_F(LiveCheck, KeepsWhatHasTextAndDateAndNoLiveRow) {
    leaveDeleted({{kGroupMessageColumns, groupMessageRow(2, "+15550101", "gone") + "," +
                                             groupMessageRow(3, "+15550102", "12345") + "," +
                                             groupMessageRow(4, "+15550103", "") + "," +
                                             groupMessageRow(5, "+15550104", "zero", 0)}});
    MessagesIOS5_6SQLiteRecovery carver(state);
    carver.DoRecoveryPath(database);
    EXPECT_EQ(carver.RecoveredData.size(), 4U);
    ASSERT_EQ(carver.RecoveredFiltered.size(), 1U);
    EXPECT_EQ(told(as<Message>(carver.RecoveredFiltered[0])),
              "Recovered=true|RowId=2|Text=gone|Address=+15550101|OriginalDate=400000000|"
              "Date=2013-09-04 15:06:40|IsFromMe=true|Flags=33");
}

TEST_F(LiveCheck, CountsMessagesOfIos5And6ForThreeCategories) {
    struct Counting : MessagesIOS5_6SQLiteRecovery {
        using MessagesIOS5_6SQLiteRecovery::incrementRecoveryCount;
        using MessagesIOS5_6SQLiteRecovery::MessagesIOS5_6SQLiteRecovery;
    };
    state.DeletedSMSCount = 6;
    EXPECT_EQ(Counting(state).incrementRecoveryCount(), 7);
    for (const auto* count :
         {&state.DeletedSMSCount, &state.DeletediMessageCount, &state.DeletedFaceTimeCount})
        EXPECT_EQ(*count, 7);
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
    carver.CheckIfinDB(folder / "missing");
    EXPECT_EQ(carver.RecoveredFiltered.size(), 1U);
    carver.CheckIfinDB(database);
    EXPECT_TRUE(carver.RecoveredFiltered.empty());
}

TEST_F(LiveCheck, TextsBelowZeroDateAreLookedUpAlone) {
    MessagesIOS4SQLiteRecovery carver(state);
    carver.RecoveredData = {message("12345", -1), message("12345", 400000001)};
    carver.CheckIfinDB(database);
    EXPECT_THAT(carver.RecoveredFiltered, ElementsAre(carver.RecoveredData[1]));
}

TEST_F(LiveCheck, HostileTextsEndQuietly) {
    const auto before = readWholeFile(database);
    MessagesIOS5_6SQLiteRecovery carver(state);
    for (const auto* text :
         {"1; DROP TABLE message", "1; ATTACH DATABASE 'other.db' AS other",
          "(WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM n) SELECT count(*) FROM n) "
          "--",
          "1' OR '", "load_extension('evil')"})
        carver.RecoveredData.push_back(message(text, 400000000));
    carver.CheckIfinDB(database);
    EXPECT_EQ(carver.RecoveredFiltered, carver.RecoveredData);
    EXPECT_EQ(readWholeFile(database), before);
}

}  // namespace
}  // namespace salvor
