#include <gmock/gmock.h>

#include "services/messageServicesIOS4.h"
#include "services/messageServicesIOS5_6.h"
#include "tests/carving/messages/MessageDatabase.h"

namespace salvor::testing {
namespace {

using ::testing::ElementsAre;

class GroupLayout : public MessageScan {
  protected:
    GroupLayout() {
        database.makeGroupLayout();
        database.exec(
            "INSERT INTO group_member VALUES(1,9,'+15550109','us'),(2,7,'+15550100','us'),"
            "(3,7,'new@example.org','us'),(4,7,'Shop','us')");
        database.insert("message", groupMessageRow(1, "+15550100", "sooner", 1000000000) + "," +
                                       groupMessageRow(2, "+15550100", "later", 1000000009));
        auto contact = std::make_shared<Contact>();
        contact->ContactNo1 = "555 0100";
        contact->EmailAddress1 = "ada@example.org";
        contact->NickName = "Ada";
        contact->FullName = "Ada Lovelace";
        state.ContactContent.push_back(contact);
    }

    void insertDeletedMessages() const {
        database.insertDeleted(kGroupMessageColumns,
                               groupMessageRow(3, "+15550100", "first") + "," +
                                   groupMessageRow(4, "+15550100", "second") + "," +
                                   groupMessageRow(5, "Shop", "nobody"));
        database.freeDeleted();
    }
};

TEST_F(GroupLayout, GroupsAreNamedByContactsOrBareAddresses) {
    insertDeletedMessages();
    messageServicesIOS4 service(state);
    service.RecoverFromIOSBackup(state.deviceInfo);
    ASSERT_EQ(state.Conversations.size(), 2U);
    const auto& group = *state.Conversations[0];
    EXPECT_EQ(group.GroupId, 7);
    ASSERT_EQ(group.PhoneNumbers.size(), 1U);
    EXPECT_EQ(std::get<std::string>(group.PhoneNumbers[0]), "555 0100");
    EXPECT_THAT(group.Emails, ElementsAre("ada@example.org", "new@example.org"));
    EXPECT_THAT(group.Names, ElementsAre("Ada"));
    EXPECT_EQ(state.Conversations[1]->GroupId, 9);
    EXPECT_EQ(std::get<std::string>(state.Conversations[1]->PhoneNumbers.at(0)), "+15550109");
    EXPECT_TRUE(group.Messages.empty());
}

TEST_F(GroupLayout, CarvedMessagesGoInFrontOfTheirConversation) {
    insertDeletedMessages();
    messageServicesIOS5_6 service(state);
    service.RecoverFromIOSBackup(state.deviceInfo);
    const auto group = state.Conversations.at(0);
    std::vector<std::string> texts;
    for (const auto& message : group->Messages) {
        texts.push_back(message->Text.value_or("absent"));
        EXPECT_TRUE(message->IsActivated && message->IsVisible && message->Recovered);
        EXPECT_EQ(message->ConversationContact.lock(), group);
    }
    EXPECT_THAT(texts, ElementsAre("first", "second"));
    EXPECT_TRUE(group->ContainsDeletedMessage);
    EXPECT_TRUE(state.Conversations.at(1)->Messages.empty());
    EXPECT_EQ(service.recovered(), 3);

    service.LoadConversationMessages(group, state.deviceInfo);
    ASSERT_EQ(group->Messages.size(), 4U);
    EXPECT_EQ(group->Messages[2]->Text, "later");
    EXPECT_EQ(group->Messages[3]->Flags, 33);
    EXPECT_FALSE(group->Messages[3]->Recovered);
}

}  // namespace
}  // namespace salvor::testing
