#include "services/messageServicesIOS7_8.h"

#include "tests/support/MessageScan.h"

namespace salvor {
namespace {

using testing::ElementsAre;

/// Who it is with, and then its messages.
std::string line(const ConversationContact& conversation) {
    auto bare = conversation;
    bare.Messages.clear();
    std::string text = told(bare);
    for (const auto& message : conversation.Messages) {
        EXPECT_EQ(message->ConversationContact.lock().get(), &conversation);
        text += "; " + message->Text.value_or("absent");
    }
    return text;
}

class ChatLayout : public MessageScan {
  protected:
    ChatLayout() {
        makeChatLayout();
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

    Texts run(std::stop_token cancelled = {}) {
        const auto service = MessageServices::initwithDevice(state, state.deviceInfo);
        service->setStopToken(std::move(cancelled));
        service->RecoverFromIOSBackup(state.deviceInfo);
        EXPECT_EQ(state.Conversations, service->ConversationContacts());
        Texts lines;
        for (const auto& conversation : state.Conversations) lines.push_back(line(*conversation));
        return lines;
    }
};

// Read at once, the handles of each chat are those that a statement for it gives, in its order.
TEST_F(ChatLayout, HandlesOfAllChatsAreThoseOfEach) {
    struct Opened : messageServicesIOS7_8 {
        explicit Opened(ScanState& scan) : messageServicesIOS7_8(scan) {
            connect(scan.deviceInfo);
            dbUtils_->openDatabase();
        }
    };
    insert("handle", "(31,'a','us','SMS'),(32,'b',NULL,'SMS'),(33,'c','us',NULL),(34,'d','','')");
    insert(
        "chat_handle_join",
        "(51,33),(52,31),(51,31),('51',34),(51.5,32),('x',32),(NULL,31),(51,32),(51,39),(53,39)");
    for (const char* index : {"SELECT 1", "CREATE INDEX one ON chat_handle_join(chat_id)",
                              "CREATE INDEX two ON chat_handle_join(chat_id, handle_id)"}) {
        exec(index);
        Opened service(state);
        auto all = service.handlesOfChatsInDB();
        for (const int id : {0, 51, 52, 53}) {
            MessageChat chat;
            chat.RowId = id;
            EXPECT_EQ(toldAll(all[id]),
                      toldAll(service.GetMesssageHandlesFromMessageChatInDB(chat)))
                << id << " " << index;
        }
        EXPECT_EQ(all[51].size(), 4U);
    }
}

TEST_F(ChatLayout, ChatsAreNamedByContactsOrBareHandles) {
    insert("handle",
           "(31,'+15550100','us','SMS'),(32,'+15550109','us','SMS'),"
           "(33,'countess@example.org',NULL,'iMessage'),(34,'Shop',NULL,'SMS'),"
           "(35,'other@example.org',NULL,'iMessage')");
    insert("chat", "(52,'g','b',NULL),(51,'g','a',NULL)");
    insert("chat_handle_join", "(51,31),(51,32),(52,33),(52,34),(52,35),(52,36)");
    EXPECT_THAT(
        run(), ElementsAre(
                   "Names=[Ada]|PhoneNumbers=[555 0100 + {PhoneNumber=+15550109|"
                   "IsPhoneNumber=true}]|Emails=[ada@example.org]|RowIds=[31 + 32]|ChatId=51",
                   "Names=[Ada + Shop]|PhoneNumbers=[{PhoneNumber=555 0100, 555 0200}]|"
                   "Emails=[ada@example.org + other@example.org]|RowIds=[33 + 34 + 35]|ChatId=52"));
}

TEST_F(ChatLayout, CarvedHandlesInARowShareAConversation) {
    leaveDeleted({{kHandleColumns,
                   "(41,'+15550109','us','SMS'),(42,'+15550100','us','SMS'),"
                   "(43,'+15550109','us','SMS'),(44,'+15550109','us','SMS')"}});
    EXPECT_THAT(run(), ElementsAre("RowIds=[44 + 43]|PhoneNumberHandleId=+15550109",
                                   "Names=[Ada]|PhoneNumbers=[{PhoneNumber=555 0100, 555 0200}]|"
                                   "Emails=[ada@example.org, countess@example.org]|RowIds=[42]|"
                                   "PhoneNumberHandleId=+15550100",
                                   "RowIds=[41]|PhoneNumberHandleId=+15550109"));
}

TEST_F(ChatLayout, CarvedMessagesFollowTheLiveOnesOfTheirHandle) {
    insert("handle", "(31,'+15550109','us','SMS')");
    insert("chat", "(51,'g','a',NULL),(52,'g','b',NULL)");
    insert("chat_handle_join", "(51,31),(52,31)");
    insert("chat_message_join", "(51,11),(51,12)");
    insert("message", messageRow(11, "later", 31, 400000009) + "," + messageRow(12, "sooner", 31));
    leaveDeleted(
        {{kMessageColumns, messageRow(13, "gone", 31) + "," + messageRow(14, "gone too", 31)}});
    EXPECT_THAT(
        run(),
        ElementsAre(
            "PhoneNumbers=[{PhoneNumber=+15550109|IsPhoneNumber=true}]|RowIds=[31]|ChatId=51|"
            "ContainsDeletedMessage=true|"
            "NotContainsDeletedMessage=false; sooner; later; gone too; gone",
            "PhoneNumbers=[{PhoneNumber=+15550109|IsPhoneNumber=true}]|RowIds=[31]|ChatId=52"));
    const auto& live = *state.Conversations[0]->Messages[0];
    EXPECT_EQ(live.Address, "+15550109");
    EXPECT_FALSE(live.Recovered);
}

TEST_F(ChatLayout, JoinsLeadToTheConversation) {
    insert("handle", "(31,'+15550109','us','SMS')");
    insert("chat", "(51,'g','a',NULL)");
    // The engine cannot read the last bytes of a page, so rows that nobody misses lie there.
    insert("chat_handle_join", "(2,2),(2,2),(51,31),(61,31)");
    // Of the two chats of message 71 the one written later is found first.
    insert("chat_message_join", "(2,2),(2,2),(62,71),(51,71),(61,72),(62,73),(62,74)");
    std::string rows;
    for (const int row : {71, 72, 73, 74})
        rows += (rows.empty() ? "" : ",") + messageRow(row, "text " + std::to_string(row), 0);
    leaveDeleted({{"(ROWID INTEGER PRIMARY KEY, guid TEXT, chat_identifier TEXT, account_id TEXT)",
                   "(60,'none','end of page',NULL),(62,'SMS;-;+155501062','+155501062',NULL)"},
                  {kMessageColumns, rows}});
    exec("UPDATE sqlite_sequence SET seq = 62 WHERE name = 'chat'");
    EXPECT_THAT(
        run(),
        ElementsAre(
            "PhoneNumbers=[{PhoneNumber=+15550109|IsPhoneNumber=true}]|RowIds=[31]|ChatId=51|"
            "ContainsDeletedMessage=true|NotContainsDeletedMessage=false; text 72; text 71",
            "PhoneNumbers=[{PhoneNumber=+155501062|IsPhoneNumber=true}]|RowIds=[0]|"
            "PhoneNumberHandleId=+155501062|ContainsDeletedMessage=true|"
            "NotContainsDeletedMessage=false; text 74; text 73"));
}

// Only a handle is shared: what bears none is nobody's, and every row keeps an address of its own.
TEST_F(ChatLayout, UnknownCounterpartsAreNumberedOnceAHandle) {
    leaveDeleted({{kMessageColumns, messageRow(1, "a", 0) + "," + messageRow(2, "b", 0) + "," +
                                        messageRow(3, "d", 98) + "," + messageRow(4, "e", 97) +
                                        "," + messageRow(5, "c", 98)}});
    state.unKnownCount = 17;
    EXPECT_THAT(
        run(),
        ElementsAre(
            "PhoneNumbers=[{PhoneNumber=Unknown 1}]|RowIds=[98]|"
            "PhoneNumberHandleId=Unknown 1|ContainsDeletedMessage=true|"
            "NotContainsDeletedMessage=false; c; d",
            "PhoneNumbers=[{PhoneNumber=Unknown 2}]|RowIds=[97]|PhoneNumberHandleId=Unknown 2|"
            "ContainsDeletedMessage=true|NotContainsDeletedMessage=false; e",
            "PhoneNumbers=[{PhoneNumber=Unknown 3}]|RowIds=[0]|PhoneNumberHandleId=Unknown 3|"
            "ContainsDeletedMessage=true|NotContainsDeletedMessage=false; b",
            "PhoneNumbers=[{PhoneNumber=Unknown 4}]|RowIds=[0]|PhoneNumberHandleId=Unknown 4|"
            "ContainsDeletedMessage=true|NotContainsDeletedMessage=false; a"));
    Texts addresses;
    for (const auto& row : state.DeletedSMS) addresses.push_back(row->Address.value_or(""));
    EXPECT_THAT(addresses, ElementsAre("unknown1", "unknown2", "unknown3", "unknown4", "unknown5"));
}

TEST_F(ChatLayout, AMissingColumnCostsNoMessage) {
    insert("chat", "(51,'g','a',NULL)");
    insert("message", messageRow(11, "still here", 31));
    insert("chat_message_join", "(51,11)");
    exec(
        "ALTER TABLE message DROP COLUMN cache_has_attachments;"
        "ALTER TABLE message DROP COLUMN account_guid");
    EXPECT_THAT(run(), ElementsAre("ChatId=51; still here"));
}

TEST_F(ChatLayout, NothingComesOfACancelledRunOrAMissingDatabase) {
    leaveDeleted({{kMessageColumns, messageRow(1, "a", 0)}});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(run(stop.get_token()).empty());
    useBackup(state, folder / "missing");
    EXPECT_TRUE(run().empty());
    state.deviceInfo.fullPath = database.string();
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
}  // namespace salvor
