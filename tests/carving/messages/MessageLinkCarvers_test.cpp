#include "carving/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"
#include "carving/MessageChatHandleJoinSQLiteRecovery.h"
#include "carving/MessageChatMessageJoinSQLiteRecovery.h"
#include "carving/MessageGuidAndRowIdConnectionSQLiteRecovery.h"
#include "carving/MessageHandleSQLiteRecovery.h"
#include "tests/carving/messages/MessageDatabase.h"

namespace salvor::testing {
namespace {

class Links : public MessageScan {
  protected:
    Links() { database.makeChatLayout(); }
};

TEST_F(Links, HandlesAreValidUntilTheFirstZeroByte) {
    const struct {
        Text id;
        bool valid;
    } cases[] = {
        {std::nullopt, false},
        {"", true},
        {"+1 555 ~", true},
        {"a\x1f", false},
        {"a\x7f", false},
        {"caf\xc3\xa9", false},
        {std::string("ok\0\x01", 4), true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(MessageHandleSQLiteRecovery::IsValid(c.id), c.valid) << c.id.value_or("absent");
}

TEST_F(Links, HandlesThatAreLiveAreDropped) {
    database.insert("handle", "(1,'5550100','44','7')");
    database.insertDeleted(kHandleColumns,
                           "(2,'+15550101','us','SMS'),(3,'5550100','44','7'),"
                           "(4,'caf' || char(233) || 'caf','us','SMS')");
    database.freeDeleted();
    const auto records = carve<MessageHandleSQLiteRecovery>();
    const auto handles = as<MessageHandle>(records);
    ASSERT_EQ(handles.size(), 1U);
    EXPECT_EQ(handles[0]->RowId, 2);
    EXPECT_EQ(handles[0]->Id, "+15550101");
    EXPECT_EQ(handles[0]->Country, "us");
    EXPECT_EQ(handles[0]->Service, "SMS");
}

TEST_F(Links, JoinsComeFromLiveAndFreedRows) {
    database.exec(
        // The engine cannot read the last bytes of a page, so rows that nobody misses lie there.
        "INSERT INTO chat_message_join VALUES(2,2),(2,2),(20,30),(21,31),(22,-5);"
        "DELETE FROM chat_message_join WHERE chat_id = 21");
    const auto records = carve<MessageChatMessageJoinSQLiteRecovery>();
    std::vector<std::pair<std::int64_t, std::int64_t>> pairs;
    for (const auto* join : as<ChatMessageJoin>(records))
        pairs.emplace_back(join->ChatId, join->MessageId);
    EXPECT_NE(std::find(pairs.begin(), pairs.end(), std::pair{20L, 30L}), pairs.end());
    for (const auto& [chat, message] : pairs) EXPECT_TRUE(chat > 0 && message > 0);

    const auto handles = carve<MessageChatHandleJoinSQLiteRecovery>();
    const auto joins = as<ChatHandleJoin>(handles);
    const auto found = std::find_if(joins.begin(), joins.end(),
                                    [](const auto* join) { return join->ChatId == 20; });
    ASSERT_NE(found, joins.end());
    EXPECT_EQ((*found)->HandleId, "30");
}

TEST_F(Links, RowIdsAboveTheLargestEverAreDropped) {
    for (const int rowId : {2, 3, 4})
        database.insert("message",
                        messageRow(rowId, "GUID-000" + std::to_string(rowId), "text", 9));
    const auto rowIds = [this] {
        std::vector<std::int64_t> ids;
        for (const auto& record : carve<MessageGuidAndRowIdConnectionSQLiteRecovery>())
            ids.push_back(record->RowId);
        return ids;
    };
    EXPECT_EQ(rowIds(), (std::vector<std::int64_t>{4, 3, 2}));
    database.exec("UPDATE sqlite_sequence SET seq = 3 WHERE name = 'message'");
    EXPECT_EQ(rowIds(), (std::vector<std::int64_t>{3, 2}));
    database.exec("UPDATE sqlite_sequence SET seq = 0 WHERE name = 'message'");
    EXPECT_EQ(rowIds().size(), 3U);
}

TEST_F(Links, ChatGuidsNameTheCounterpart) {
    database.exec(
        "INSERT INTO chat VALUES(1,'end of "
        "page',NULL,NULL),(2,'SMS;-;+155501001','a',NULL),(3,'SMS;-;+15550100-','b',NULL),"
        "(4,'no separators 16','c',NULL),(9,'SMS;-;+155501009','d',NULL);"
        "UPDATE sqlite_sequence SET seq = 4 WHERE name = 'chat'");
    const auto records = carve<MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery>();
    const auto links = as<MessageChatGuidAndChatIdHandleConnection>(records);
    ASSERT_EQ(links.size(), 2U);
    EXPECT_EQ(links[0]->RowId, 4);
    EXPECT_EQ(links[0]->Id, std::nullopt);
    EXPECT_EQ(links[1]->RowId, 2);
    EXPECT_EQ(links[1]->Id, "+155501001");
}

}  // namespace
}  // namespace salvor::testing
