#include "records/ContactNames.h"

#include <gtest/gtest.h>

#include "records/CallHistory.h"
#include "tests/records/RecordFixture.h"

namespace salvor {
namespace {

// Once by the walk over all contacts, once by the index that grows with them.
TEST(ContactNames, AreFoundByExactNumber) {
    FakeContext lists;
    ContactNames names(lists);
    const auto expect = [&](std::initializer_list<std::pair<Text, const char*>> cases) {
        for (const auto& [number, name] : cases) {
            EXPECT_EQ(CallHistory::getContactNamefromNumber(number, lists), name);
            EXPECT_EQ(names.find(number), name) << number.value_or("absent");
        }
    };
    expect({{"0123", ""}, {"", ""}, {std::nullopt, ""}});
    lists.deleted = {contactOf("carved", {"0123", "123456"}),
                     contactOf("carved again", {"0123", {}, "777"})};
    expect({{"0123", "carved"}, {"123456", "carved"}, {"777", "carved again"}});
    lists.live = {contactOf("variant", {{}, "12345\u00A06"}),
                  contactOf("plain", {"123456", "12345", "00000"})};
    expect({{"123456", "variant"}, {"12345\u00A06", "variant"}, {"12345", "plain"}});
    expect({{"0123", "carved"}, {"1234", ""}, {"1234567", ""}, {"\u00A012345", ""}});
    lists.live.push_back(contactOf("new", {"", "1", "2", "fourth slot"}));
    lists.live.push_back(contactOf("late", {"0123", "00000"}));
    expect({{"", "new"}, {"fourth slot", ""}, {"0123", "late"}, {"00000", "plain"}});
    EXPECT_EQ(CallHistory::splittedTelNumber("12345"), "12345");
}

TEST(ContactNames, AreTheFirstOfThreeThatIsThere) {
    Contact contact;
    EXPECT_EQ(CallHistory::getContactName(contact), "");
    for (const auto& [part, name] :
         {std::pair(&Contact::LastName, "last"), std::pair(&Contact::FirstName, "first"),
          std::pair(&Contact::NickName, "nick")}) {
        contact.*part = name;
        EXPECT_EQ(CallHistory::getContactName(contact), name);
    }
}

}  // namespace
}  // namespace salvor
