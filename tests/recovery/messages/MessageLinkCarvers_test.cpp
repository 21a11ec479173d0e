#include "recovery/messages/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageChatHandleJoinSQLiteRecovery.h"
#include "recovery/messages/MessageChatMessageJoinSQLiteRecovery.h"
#include "recovery/messages/MessageGuidAndRowIdConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageHandleSQLiteRecovery.h"
#include "tests/support/MessageScan.h"

namespace salvor {
namespace {

using testing::Contains;
using testing::ElementsAre;

class Links : public MessageScan {
  protected:
    Links() { makeChatLayout(); }

    template <class Carver, class Record>
    Texts carved() {
        Texts all;
        for (const auto& record : carve<Carver>()) all.push_back(told(as<Record>(record)));
        return all;
    }
};

TEST_F(Links, HandlesAreValidUntilTheFirstZeroByte) {
    const std::pair<Text, bool> cases[] = {{std::nullopt, false},
                                           {"", true},
                                           {"+1 555 ~", true},
                                           {"a\x1f", false},
                                           {"a\x7f", false},
                                           {"caf\xc3\xa9", false},
                                           {std::string("ok\0\x01", 4), true}};
    for (const auto& [id, valid] : cases)
        EXPECT_EQ(MessageHandleSQLiteRecovery::IsValid(id), valid) << id.value_or("absent");
}

TEST_F(Links, HandlesThatAreLiveAreDropped) {
    insert("handle", "(1,'5550100','44','7')");
    leaveDeleted({{kHandleColumns,
                   "(2,'+15550101','us','SMS'),(3,'5550100','44','7'),"
                   "(4,'caf' || char(233) || 'caf','us','SMS')"}});
    EXPECT_THAT((carved<MessageHandleSQLiteRecovery, MessageHandle>()),
                ElementsAre("Recovered=true|RowId=2|Country=us|Service=SMS|Id=+15550101"));
}

TEST_F(Links, JoinsComeFromLiveAndFreedRows) {
    // The engine cannot read the last bytes of a page, so rows that nobody misses lie there.
    exec(
        "INSERT INTO chat_message_join VALUES(2,2),(2,2),(20,30),(21,31),(22,-5);"
        "DELETE FROM chat_message_join WHERE chat_id = 21");
    const auto joins = carve<MessageChatMessageJoinSQLiteRecovery>();
    std::vector<std::pair<std::int64_t, std::int64_t>> pairs;
    for (const auto& join : joins) {
        pairs.emplace_back(join->ChatId, join->MessageId);
        EXPECT_TRUE(join->ChatId > 0 && join->MessageId > 0);
    }
    EXPECT_THAT(pairs, Contains(std::pair{20, 30}));

    Texts handles;
    for (const auto& join : carve<MessageChatHandleJoinSQLiteRecovery>())
        handles.push_back(
            joined({std::to_string(join->ChatId), as<ChatHandleJoin>(join).HandleId}));
    EXPECT_THAT(handles, Contains("20|30"));
}

TEST_F(Links, RowIdsAboveTheLargestEverAreDropped) {
    for (const int rowId : {2, 3, 4}) insert("message", messageRow(rowId, "text", 9));
    const std::pair<const char*, std::vector<std::int64_t>> cases[] = {
        {"4", {4, 3, 2}}, {"3", {3, 2}}, {"0", {4, 3, 2}}};
    for (const auto& [largest, expected] : cases) {
        exec(std::string("UPDATE sqlite_sequence SET seq = ") + largest);
        std::vector<std::int64_t> rowIds;
        for (const auto& record : carve<MessageGuidAndRowIdConnectionSQLiteRecovery>())
            rowIds.push_back(record->RowId);
        EXPECT_EQ(rowIds, expected) << largest;
    }
}

TEST_F(Links, ChatGuidsNameTheCounterpart) {
    insert("chat",
           "(1,'end of page',NULL,NULL),(2,'SMS;-;+155501001','a',NULL),"
           "(3,'SMS;-;+15550100-','b',NULL),(4,'no separators 16','c',NULL),"
           "(9,'SMS;-;+155501009','d',NULL)");
    exec("UPDATE sqlite_sequence SET seq = 4 WHERE name = 'chat'");
    EXPECT_THAT((carved<MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery,
                        MessageChatGuidAndChatIdHandleConnection>()),
                ElementsAre("Recovered=true|RowId=4|Guid=no separators 16",
                            "Recovered=true|RowId=2|Guid=SMS;-;+155501001|Id=+155501001"));
}

}  // namespace
}  // namespace salvor
