#include "recovery/messages/MessagesSQLiteRecovery.h"

#include "tests/support/MessageScan.h"

namespace salvor {
namespace {

using testing::ElementsAre;

class Messages : public MessageScan {
  protected:
    Messages() {
        makeChatLayout();
        insert("message", messageRow(1, "text 1", 9) + "," + messageRow(2, "text 2", 9));
        leaveDeleted(
            {{kMessageColumns, messageRow(3, "text 3", 9) + "," + messageRow(4, "text 4", 9) + "," +
                                   messageRow(5, "text 5", 9)}});
    }

    static std::shared_ptr<SMS> row(const Text& guid) {
        auto made = std::make_shared<SMS>();
        made->GUID = guid;
        return made;
    }
};

TEST_F(Messages, DeletedRowsComeBackAndLiveOnesDoNot) {
    const auto records = carve<MessagesSQLiteRecovery>();
    EXPECT_THAT(textsOf(records, &Message::Guid),
                ElementsAre("GUID-0005", "GUID-0004", "GUID-0003"));
    EXPECT_EQ(told(as<Message>(records[1])),
              "Recovered=true|RowId=4|Text=text 4|Service=SMS|Guid=GUID-0004|"
              "OriginalDate=400000000|Date=2013-09-04 15:06:40|DateRead=|HandleId=9");
    EXPECT_EQ(records[1]->Origin->database, kName);
    EXPECT_THAT(textsOf(state.DeletedSMS, &SMS::Message),
                ElementsAre("text 5", "text 4", "text 3"));
    EXPECT_EQ(state.DeletedSMS, state.AllDeletedSMS);
    EXPECT_EQ(state.DeletedSMSCount, 3);
    EXPECT_EQ(state.progress.recordsFound, 3U);
}

TEST_F(Messages, KnownGuidsEnterNoList) {
    state.AllSMSContent = {row(std::nullopt), row("GUID-0004")};
    state.AllDeletedSMS = {row("GUID-0003")};
    EXPECT_THAT(textsOf(carve<MessagesSQLiteRecovery>(), &Message::Guid), ElementsAre("GUID-0005"));
    EXPECT_EQ(state.DeletedSMS.size(), 1U);
    EXPECT_EQ(state.AllDeletedSMS.size(), 2U);
    EXPECT_EQ(state.DeletedSMSCount, 1);
}

TEST_F(Messages, RowsWithoutGuidEqualNothing) {
    state.recoverySignatures = nullptr;
    pattern("MESSAGE", "iOS7", kMessageHeader, {{"text", 4}});
    state.AllSMSContent = {row(std::nullopt)};
    EXPECT_EQ(carve<MessagesSQLiteRecovery>().size(), 3U);
}

TEST_F(Messages, CancelledOrWithoutSignatureNothingIsCarved) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(carve<MessagesSQLiteRecovery>(stop.get_token()).empty());
    state.recoverySignatures = std::make_shared<SqLiteTableSignatures>();
    EXPECT_TRUE(carve<MessagesSQLiteRecovery>().empty());
    EXPECT_TRUE(state.AllDeletedSMS.empty());
}

}  // namespace
}  // namespace salvor
