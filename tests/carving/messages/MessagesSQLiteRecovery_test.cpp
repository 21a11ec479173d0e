#include "carving/MessagesSQLiteRecovery.h"

#include "tests/carving/messages/MessageDatabase.h"

namespace salvor::testing {
namespace {

class Messages : public MessageScan {
  protected:
    Messages() {
        database.makeChatLayout();
        database.insert("message", rows(1, 2));
        database.insertDeleted(kMessageColumns, rows(3, 5));
        database.freeDeleted();
    }

    static std::string rows(int first, int last) {
        std::string text;
        for (int i = first; i <= last; ++i)
            text += (i > first ? "," : "") +
                    messageRow(i, "GUID-000" + std::to_string(i), "text " + std::to_string(i), 9);
        return text;
    }

    void addLive(const Text& guid) {
        auto row = std::make_shared<SMS>();
        row->GUID = guid;
        state.AllSMSContent.push_back(row);
    }
};

TEST_F(Messages, DeletedRowsComeBackAndLiveOnesDoNot) {
    const auto records = carve<MessagesSQLiteRecovery>();
    const auto messages = as<Message>(records);
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0]->Guid, "GUID-0005");
    EXPECT_EQ(messages[1]->Guid, "GUID-0004");
    const auto& message = *messages[1];
    EXPECT_EQ(message.RowId, 4);
    EXPECT_EQ(message.Text, "text 4");
    EXPECT_EQ(message.HandleId, 9);
    EXPECT_EQ(message.Service, "SMS");
    EXPECT_EQ(message.OriginalDate, 400000000);
    EXPECT_EQ(message.DateRead, "");
    EXPECT_TRUE(message.Recovered);
    EXPECT_FALSE(message.IsFromMe);
    ASSERT_TRUE(message.Origin);
    EXPECT_EQ(message.Origin->database, database.path.filename());

    ASSERT_EQ(state.DeletedSMS.size(), 3U);
    EXPECT_EQ(state.DeletedSMS, state.AllDeletedSMS);
    EXPECT_EQ(state.DeletedSMS[1]->Message, "text 4");
    EXPECT_EQ(state.DeletedSMSCount, 3);
    EXPECT_EQ(state.progress.recordsFound, 3U);
}

TEST_F(Messages, KnownGuidsEnterNoList) {
    addLive(std::nullopt);
    addLive("GUID-0004");
    auto found = std::make_shared<SMS>();
    found->GUID = "GUID-0003";
    state.AllDeletedSMS.push_back(found);
    const auto records = carve<MessagesSQLiteRecovery>();
    const auto messages = as<Message>(records);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0]->Guid, "GUID-0005");
    EXPECT_EQ(state.DeletedSMS.size(), 1U);
    EXPECT_EQ(state.AllDeletedSMS.size(), 2U);
    EXPECT_EQ(state.DeletedSMSCount, 1);
}

TEST_F(Messages, RowsWithoutGuidEqualNothing) {
    auto patterns = messagePatternTexts();
    patterns[0].mappings = {{"text", 4}};
    state.recoverySignatures = makeSignatures(patterns);
    addLive(std::nullopt);
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
}  // namespace salvor::testing
