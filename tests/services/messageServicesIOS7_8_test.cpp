#include "services/messageServicesIOS7_8.h"

#include <gmock/gmock.h>

#include "tests/carving/messages/MessageDatabase.h"

namespace salvor::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> numbersOf(const ConversationContact& conversation) {
    std::vector<std::string> numbers;
    for (const auto& phone : conversation.PhoneNumbers) {
        const auto* object = std::get_if<ContactPhoneNumber>(&phone);
        numbers.push_back(object ? object->PhoneNumber.value_or("absent")
                                 : std::get<std::string>(phone));
    }
    return numbers;
}

std::vector<std::string> textsOf(const ConversationContact& conversation) {
    std::vector<std::string> texts;
    for (const auto& message : conversation.Messages) {
        EXPECT_EQ(message->ConversationContact.lock().get(), &conversation);
        texts.push_back(message->Text.value_or("absent"));
    }
    return texts;
}

class ChatLayout : public MessageScan {
  protected:
    ChatLayout() {
        database.makeChatLayout();
        auto contact = std::make_shared<Contact>();
        contact->SlNo = -1;
        contact->FullName = "Ada";
        contact->ContactNo1 = "555 0100";
        contact->ContactNo2 = "555 0200";
        contact->EmailAddress1 = "ada@example.org";
        contact->EmailAddress2 = "countess@example.org";
        contact->ContactNumbersText = "555 0100, 555 0200";
        contact->ContactEmailAddresesText = "ada@example.org, countess@example.org";
        state.ContactContent.push_back(contact);
    }

    const List<ConversationContact>& run(std::stop_token cancelled = {}) {
        database.freeDeleted();
        const auto service = MessageServices::initwithDevice(state, state.deviceInfo);
        service->setStopToken(cancelled);
        service->RecoverFromIOSBackup(state.deviceInfo);
        EXPECT_EQ(state.Conversations, service->ConversationContacts());
        return state.Conversations;
    }
};

TEST_F(ChatLayout, ChatsAreNamedByContactsOrBareHandles) {
    database.insert("handle",
                    "(31,'+15550100','us','SMS'),(32,'+15550109','us','SMS'),"
                    "(33,'countess@example.org',NULL,'iMessage'),(34,'Shop',NULL,'SMS'),"
                    "(35,'other@example.org',NULL,'iMessage')");
    database.insert("chat", "(52,'g','b',NULL),(51,'g','a',NULL)");
    database.exec(
        "INSERT INTO chat_handle_join VALUES(51,31),(51,32),(52,33),(52,34),(52,35),(52,36)");
    const auto& conversations = run();
    ASSERT_EQ(conversations.size(), 2U);
    const auto& first = *conversations[0];
    EXPECT_EQ(first.ChatId, 51);
    EXPECT_THAT(first.RowIds, ElementsAre("31", "32"));
    EXPECT_THAT(numbersOf(first), ElementsAre("555 0100", "+15550109"));
    EXPECT_THAT(first.Emails, ElementsAre("ada@example.org"));
    EXPECT_THAT(first.Names, ElementsAre("Ada"));
    EXPECT_FALSE(first.ContainsDeletedMessage);
    EXPECT_TRUE(first.NotContainsDeletedMessage);
    const auto& second = *conversations[1];
    EXPECT_THAT(numbersOf(second), ElementsAre("555 0100, 555 0200"));
    EXPECT_THAT(second.Emails, ElementsAre("ada@example.org", "other@example.org"));
    EXPECT_THAT(second.Names, ElementsAre("Ada", "Shop"));
}

TEST_F(ChatLayout, CarvedHandlesInARowShareAConversation) {
    database.insertDeleted(kHandleColumns,
                           "(41,'+15550109','us','SMS'),(42,'+15550100','us','SMS'),"
                           "(43,'+15550109','us','SMS'),(44,'+15550109','us','SMS')");
    const auto& conversations = run();
    ASSERT_EQ(conversations.size(), 3U);
    EXPECT_THAT(conversations[0]->RowIds, ElementsAre("44", "43"));
    EXPECT_EQ(conversations[0]->PhoneNumberHandleId, "+15550109");
    EXPECT_THAT(numbersOf(*conversations[0]), IsEmpty());
    EXPECT_THAT(conversations[1]->RowIds, ElementsAre("42"));
    EXPECT_THAT(numbersOf(*conversations[1]), ElementsAre("555 0100, 555 0200"));
    EXPECT_THAT(conversations[1]->Emails, ElementsAre("ada@example.org, countess@example.org"));
    EXPECT_THAT(conversations[1]->Names, ElementsAre("Ada"));
    EXPECT_THAT(conversations[2]->RowIds, ElementsAre("41"));
}

TEST_F(ChatLayout, CarvedMessagesFollowTheLiveOnesOfTheirHandle) {
    database.insert("handle", "(31,'+15550109','us','SMS')");
    database.insert("chat", "(51,'g','a',NULL),(52,'g','b',NULL)");
    database.exec(
        "INSERT INTO chat_handle_join VALUES(51,31),(52,31);"
        "INSERT INTO chat_message_join VALUES(51,11),(51,12)");
    database.insert("message", messageRow(11, "GUID-0011", "later", 31, 400000009) + "," +
                                   messageRow(12, "GUID-0012", "sooner", 31));
    database.insertDeleted(kMessageColumns, messageRow(13, "GUID-0013", "gone", 31) + "," +
                                                messageRow(14, "GUID-0014", "gone too", 31));
    const auto& conversations = run();
    ASSERT_EQ(conversations.size(), 2U);
    EXPECT_THAT(textsOf(*conversations[0]), ElementsAre("sooner", "later", "gone too", "gone"));
    EXPECT_TRUE(conversations[0]->ContainsDeletedMessage);
    EXPECT_FALSE(conversations[0]->NotContainsDeletedMessage);
    EXPECT_EQ(conversations[0]->Messages[0]->Address, "+15550109");
    EXPECT_FALSE(conversations[0]->Messages[0]->Recovered);
    EXPECT_THAT(textsOf(*conversations[1]), IsEmpty());
    EXPECT_FALSE(conversations[1]->ContainsDeletedMessage);
}

TEST_F(ChatLayout, JoinsLeadToTheConversation) {
    database.insert("handle", "(31,'+15550109','us','SMS')");
    database.insert("chat", "(51,'g','a',NULL)");
    // The engine cannot read the last bytes of a page, so rows that nobody misses lie there.
    database.exec(
        "INSERT INTO chat_handle_join VALUES(2,2),(2,2),(51,31),(61,31);"
        "INSERT INTO chat_message_join VALUES(2,2),(2,2),(51,71),(61,72),(62,73),(62,74)");
    database.insertDeleted(
        "(ROWID INTEGER PRIMARY KEY, guid TEXT, chat_identifier TEXT, account_id TEXT)",
        "(60,'none','end of page',NULL),(62,'SMS;-;+155501062','+155501062',NULL)");
    database.exec("UPDATE sqlite_sequence SET seq = 62 WHERE name = 'chat'");
    std::string rows;
    for (const int row : {71, 72, 73, 74})
        rows += (rows.empty() ? "" : ",") +
                messageRow(row, "GUID-00" + std::to_string(row), "text " + std::to_string(row), 99);
    database.insertDeleted(kMessageColumns, rows);
    const auto& conversations = run();
    ASSERT_EQ(conversations.size(), 2U);
    EXPECT_THAT(textsOf(*conversations[0]), ElementsAre("text 72", "text 71"));
    EXPECT_THAT(textsOf(*conversations[1]), ElementsAre("text 74", "text 73"));
    EXPECT_THAT(numbersOf(*conversations[1]), ElementsAre("+155501062"));
}

TEST_F(ChatLayout, UnknownCounterpartsAreNumberedAndKeptApart) {
    database.insertDeleted(kMessageColumns, messageRow(1, "GUID-0001", "a", 0) + "," +
                                                messageRow(2, "GUID-0002", "b", 0) + "," +
                                                messageRow(3, "GUID-0003", "c", 98));
    state.unKnownCount = 17;
    const auto& conversations = run();
    ASSERT_EQ(conversations.size(), 3U);
    const char* names[] = {"Unknown 1", "Unknown 2", "Unknown 3"};
    const char* rowIds[] = {"98", "0", "0"};
    const char* texts[] = {"c", "b", "a"};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_THAT(numbersOf(*conversations[i]), ElementsAre(names[i]));
        EXPECT_EQ(conversations[i]->PhoneNumberHandleId, names[i]);
        EXPECT_THAT(conversations[i]->RowIds, ElementsAre(rowIds[i]));
        EXPECT_THAT(textsOf(*conversations[i]), ElementsAre(texts[i]));
        EXPECT_TRUE(conversations[i]->ContainsDeletedMessage);
    }
    ASSERT_EQ(state.DeletedSMS.size(), 3U);
    EXPECT_EQ(state.DeletedSMS[0]->Address, "unknown1");
}

TEST_F(ChatLayout, AMissingColumnCostsNoMessage) {
    database.insert("chat", "(51,'g','a',NULL)");
    database.insert("message", messageRow(11, "GUID-0011", "still here", 31));
    database.exec(
        "INSERT INTO chat_message_join VALUES(51,11);"
        "ALTER TABLE message DROP COLUMN cache_has_attachments;"
        "ALTER TABLE message DROP COLUMN account_guid");
    ASSERT_EQ(run().size(), 1U);
    EXPECT_THAT(textsOf(*state.Conversations[0]), ElementsAre("still here"));
}

TEST_F(ChatLayout, NothingComesOfACancelledRunOrAMissingDatabase) {
    database.insertDeleted(kMessageColumns, messageRow(1, "GUID-0001", "a", 0));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(run(stop.get_token()).empty());
    state.BACKUP_DIRECTORY = (database.folder / "missing").string();
    EXPECT_TRUE(run().empty());
    state.deviceInfo.fullPath = database.path.string();
    EXPECT_EQ(run().size(), 1U);
}

TEST_F(ChatLayout, AddressesAreTakenFromTheSecondNumber) {
    auto row = std::make_shared<SMS>();
    row->RowID = -1;
    auto other = std::make_shared<SMS>();
    other->RowID = 5;
    other->Address = "before";
    state.DeletedSMS = {row, other};
    messageServicesIOS7_8(state).updatePhoneNumbersInMessages();
    EXPECT_EQ(row->Address, "555 0200");
    EXPECT_EQ(other->Address, "before");
}

}  // namespace
}  // namespace salvor::testing
