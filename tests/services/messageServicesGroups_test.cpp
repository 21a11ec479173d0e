#include "services/messageServicesIOS4.h"
#include "services/messageServicesIOS5_6.h"
#include "tests/support/MessageScan.h"

namespace salvor {
namespace {

using testing::ElementsAre;

class GroupLayout : public MessageScan {
  protected:
    GroupLayout() {
        makeGroupLayout();
        insert("group_member",
               "(1,9,'+15550109','us'),(2,7,'+15550100','us'),(3,7,'new@example.org','us'),"
               "(4,7,'Shop','us')");
        insert("message", groupMessageRow(1, "+15550100", "sooner", 1000000000) + "," +
                              groupMessageRow(2, "+15550100", "later", 1000000009));
        leaveDeleted({{kGroupMessageColumns, groupMessageRow(3, "+15550100", "first") + "," +
                                                 groupMessageRow(4, "+15550100", "second") + "," +
                                                 groupMessageRow(5, "Shop", "nobody")}});
        auto contact = std::make_shared<Contact>();
        contact->ContactNo1 = "555 0100";
        contact->EmailAddress1 = "ada@example.org";
        contact->NickName = "Ada";
        contact->FullName = "Ada Lovelace";
        state.ContactContent.push_back(contact);
    }
};

// No group holds a message. Kept: ios4-stays-unattached.
TEST_F(GroupLayout, GroupsAreNamedByContactsOrBareAddresses) {
    messageServicesIOS4(state).RecoverFromIOSBackup(state.deviceInfo);
    EXPECT_THAT(toldAll(state.Conversations),
                ElementsAre("Names=[Ada]|PhoneNumbers=[555 0100]|"
                            "Emails=[ada@example.org + new@example.org]|GroupId=7",
                            "PhoneNumbers=[+15550109]|GroupId=9"));
}

TEST_F(GroupLayout, CarvedMessagesGoInFrontOfTheirConversation) {
    messageServicesIOS5_6 service(state);
    service.RecoverFromIOSBackup(state.deviceInfo);
    const auto group = state.Conversations.at(0);
    EXPECT_THAT(textsOf(group->Messages, &Message::Text), ElementsAre("first", "second"));
    for (const auto& message : group->Messages) {
        EXPECT_TRUE(message->IsActivated && message->IsVisible && message->Recovered);
        EXPECT_EQ(message->ConversationContact.lock(), group);
    }
    EXPECT_TRUE(group->ContainsDeletedMessage);
    EXPECT_TRUE(state.Conversations.at(1)->Messages.empty());
    EXPECT_EQ(service.recovered(), 3);

    service.LoadConversationMessages(group, state.deviceInfo);
    EXPECT_THAT(textsOf(group->Messages, &Message::Text),
                ElementsAre("first", "second", "later", "sooner"));
    EXPECT_EQ(group->Messages[3]->Flags, 33);
    EXPECT_FALSE(group->Messages[3]->Recovered);
}

}  // namespace
}  // namespace salvor
