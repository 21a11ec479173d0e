#include "tests/live/DaosFixture.h"

namespace salvor {
namespace {

class DaosMessages : public DaosFixture {
  protected:
    void writeOlder() {
        write("sms",
              "CREATE TABLE message (ROWID INTEGER PRIMARY KEY, address TEXT, date INTEGER, text "
              "TEXT, flags INTEGER);"
              "INSERT INTO message VALUES (1, '+1555', 1300000000, 'a' || char(10) || 'b', 2),"
              "(2, NULL, 4294967297, NULL, 7), (3, 'gone', 1, 'x', 129), (4, 'm', 0, '', 131),"
              "(5, 'f', 0, 'y', 33);");
    }
    void writeNewer() {
        write("sms",
              "CREATE TABLE handle (ROWID INTEGER PRIMARY KEY, id TEXT);"
              "CREATE TABLE message (ROWID INTEGER PRIMARY KEY, guid TEXT, text TEXT, handle_id "
              "INTEGER, attributedBody BLOB, service TEXT, error INTEGER, date INTEGER, is_from_me "
              "INTEGER);"
              "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY, chat_identifier TEXT, service_name "
              "TEXT);"
              "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER);"
              "INSERT INTO handle VALUES (7, '+1777'), (8, NULL);"
              "INSERT INTO message VALUES (1, 'g1', 'one', 7, NULL, 'iMessage', 0, 398000000, 0),"
              "(2, 'g2', 'two', 9, NULL, 'SMS', 0, 398000001, 1), (3, NULL, 'three', 7, NULL, "
              "'iMessage', 4, 398000002, 1);"
              "INSERT INTO chat VALUES (5, '+1777', 'iMessage'), (6, 'it''s', NULL);"
              "INSERT INTO chat_message_join VALUES (5, 1), (5, 3);");
    }
};

Texts lines(const List<SMS>& list) {
    Texts all;
    for (const auto& sms : list)
        all.push_back(joined({std::to_string(sms->SlNo), std::to_string(sms->RowID), sms->Address,
                              sms->LocalTime, sms->Message, sms->Type, sms->GUID}));
    return all;
}

TEST_F(DaosMessages, OlderRowsTakeTheirTypeFromTheFlags) {
    version(5);
    writeOlder();
    const Texts expected = {
        "1|0|+1555|2011-03-13 07:06:40|ab|Received from|-",
        "2|0|-|1970-01-01 00:00:01|-|-|-",  // cut to 32 bits; flags 7 has no text
        "3|0|m|1970-01-01 00:00:00||Unknown|-",
        "4|0|f|1970-01-01 00:00:00|y|Message Send Failure|-"};
    EXPECT_EQ(lines(daos.GetSMS()), expected);
    EXPECT_EQ(lines(state.AllSMSContent), expected);
    EXPECT_EQ(state.SMSCount, 4);
    ASSERT_NE(state.dbUtils(), nullptr);
    EXPECT_EQ(state.dbUtils()->dbPath(), (folder / "sms").string());
    EXPECT_NE(state.daos(), nullptr);
}

TEST_F(DaosMessages, NewerRowsTakeTheirTypeFromErrorAndDirection) {
    version(6);
    writeNewer();
    EXPECT_EQ(lines(daos.GetSMS()), (Texts{"1|1|+1777|2013-08-12 11:33:20|one|Received from|g1",
                                           "2|2|-|2013-08-12 11:33:21|two|Sent to|g2",
                                           "3|3|+1777|2013-08-12 11:33:22|three|Message Send "
                                           "Failure|-"}));
    EXPECT_EQ(lines(daos.GetiMessage()),
              (Texts{"1|0|+1777|2013-08-12 11:33:20|one|Received from|-",
                     "2|0|+1777|2013-08-12 11:33:22|three|Message Send Failure|-"}));
    EXPECT_EQ(state.iMessageCount, 2);
    EXPECT_EQ(state.iMessageContent.size(), 2U);
}

TEST_F(DaosMessages, ChatsAndLinks) {
    version(7);
    writeNewer();
    const auto links = daos.GetChatMessageJoin();
    EXPECT_THAT(toldAll(links),
                testing::ElementsAre("ChatId=5|MessageId=1|SlNo=1", "ChatId=5|MessageId=3|SlNo=2"));
    EXPECT_EQ(state.AllChatMessageJoinContent, links);
    const auto chats = daos.GetAllChats();
    EXPECT_THAT(toldAll(chats),
                testing::ElementsAre("RowId=5|chat_identifier=+1777|servicType=iMessage",
                                     "RowId=6|chat_identifier=it's"));
    EXPECT_EQ(state.AllChatsContent, chats);
    EXPECT_THAT(toldAll(daos.GetChatsOf("+1777")),
                testing::ElementsAre(
                    "chat_identifier=+1777|is_from_me=0|date=2013-08-12 11:33:20|text=one",
                    "chat_identifier=+1777|is_from_me=1|date=2013-08-12 11:33:22|text=three"));
    EXPECT_TRUE(daos.GetChatsOf("it's").empty());  // spliced without quoting: does not prepare
    EXPECT_EQ(daos.GetChatsOf("x' OR '1'='1").size(), 2U);
    EXPECT_TRUE(daos.GetChatsOf("x'; DROP TABLE chat; --").empty());
}

TEST_F(DaosMessages, LookUps) {
    version(7);
    writeNewer();
    EXPECT_EQ(daos.GetAllMessageRowID(),
              (std::map<std::int64_t, Text>{{1, "one"}, {2, "two"}, {3, "three"}}));
    EXPECT_EQ(daos.GetAllMessageGUID(),
              (std::map<std::string, std::int64_t>{{"g1", 1}, {"g2", 2}}));
    EXPECT_EQ(daos.GetPhoneNumberForHID(7, "f"), "+1777");
    EXPECT_EQ(daos.GetPhoneNumberForID(8, "f"), std::nullopt);
    EXPECT_EQ(daos.GetPhoneNumberForID(9, "f"), "f");
    EXPECT_EQ(state.daos(), nullptr);  // look-ups leave the shared handle alone
}

TEST_F(DaosMessages, AMissingDatabaseGivesNoRowsAndIsNotMade) {
    version(9);
    EXPECT_TRUE(daos.GetSMS().empty());
    EXPECT_TRUE(daos.GetChatsOf("x").empty());
    EXPECT_EQ(daos.GetPhoneNumberForHID(1, std::nullopt), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(DaosMessages, FilesLieInSubFoldersOfNewerBackups) {
    version(10);
    writeNewer();
    std::filesystem::create_directory(folder / "sm");
    std::filesystem::rename(folder / "sms", folder / "sm" / "sms");
    EXPECT_EQ(daos.GetSMS().size(), 3U);
}

TEST(MessageType, ErrorBeforeDirection) {
    EXPECT_EQ(DAOs::GetMessageType(4, 1), "Message Send Failure");
    EXPECT_EQ(DAOs::GetMessageType(0, 1), "Sent to");
    EXPECT_EQ(DAOs::GetMessageType(0, 2), "Received from");
}

}  // namespace
}  // namespace salvor
