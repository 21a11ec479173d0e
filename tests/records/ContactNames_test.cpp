#include "records/ContactNames.h"

#include <gtest/gtest.h>

#include "records/CallHistory.h"

namespace salvor {
namespace {

struct ContactLists : RecordContext {
    List<Contact> live, deleted;
    std::shared_ptr<DatabaseLookups> lookups() const override { return nullptr; }
    std::shared_ptr<DatabaseLookups> openCalendarLookups() override { return nullptr; }
    std::int64_t nextUnknownNumber() override { return 0; }
    const List<Contact>& liveContacts() const override { return live; }
    const List<Contact>& deletedContacts() const override { return deleted; }
    std::size_t deletedCallLogCount() const override { return 0; }
};

std::shared_ptr<Contact> contact(const char* name, std::initializer_list<Text> numbers) {
    auto made = std::make_shared<Contact>();
    made->FirstName = name;
    Text Contact::*slots[] = {&Contact::ContactNo1, &Contact::ContactNo2, &Contact::ContactNo3,
                              &Contact::ContactNo4};
    std::size_t slot = 0;
    for (const auto& number : numbers) (*made).*slots[slot++] = number;
    return made;
}

TEST(ContactNames, AnswerAsTheWalkOverAllContactsDoes) {
    ContactLists lists;
    ContactNames names(lists);
    const Text numbers[] = {std::nullopt,   "",        "0123",  "12345", "123456",
                            "12345\u00A06", "1234567", "00000", "99999", "\u00A012345"};
    const auto check = [&](const char* step) {
        for (const auto& number : numbers)
            EXPECT_EQ(names.find(number), CallHistory::getContactNamefromNumber(number, lists))
                << step << ": " << number.value_or("absent");
    };
    check("no contacts");
    lists.deleted = {contact("carved", {"0123", "123456"}), contact("carved again", {"0123"})};
    check("carved ones");
    EXPECT_EQ(names.find("123456"), "carved");
    lists.live = {contact("variant", {std::nullopt, "12345\u00A06"}),
                  contact("plain", {"123456", "12345", "00000"})};
    check("live ones");
    EXPECT_EQ(names.find("123456"), "variant");
    lists.live.push_back(contact("fourth slot", {"", "1", "2", "99999"}));
    lists.live.push_back(contact("late", {"0123", "00000"}));
    check("more live ones");
    EXPECT_EQ(names.find(""), "fourth slot") << "an empty number is one that a contact may have";
    EXPECT_EQ(names.find("99999"), "") << "only the first three numbers are searched";
}

}  // namespace
}  // namespace salvor
