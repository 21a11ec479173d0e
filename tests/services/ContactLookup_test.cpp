#include "services/ContactLookup.h"

#include <gtest/gtest.h>

#include "app/state/ScanState.h"

namespace salvor {
namespace {

TEST(ContactLookup, FindsByNumberAndAddressLiveContactsFirst) {
    ScanState state;
    const auto add = [](List<Contact>& list, const char* name, auto fill) {
        auto contact = std::make_shared<Contact>();
        contact->FullName = name;
        fill(*contact);
        list.push_back(contact);
    };
    add(state.DeletedContact, "carved", [](Contact& c) {
        c.ContactNo1 = "07700 900123";
        c.EmailAddress1 = "carved@example.org";
    });
    add(state.ContactContent, "live", [](Contact& c) {
        c.ContactNo2 = "+44 (0)7700 900123";
        c.EmailAddress3 = "live@example.org";
    });
    add(state.ContactContent, "later", [](Contact& c) {
        c.ContactNo1 = "7700900123";
        c.EmailAddress1 = "live@example.org";
    });
    add(state.ContactContent, "short", [](Contact& c) { c.ContactNo6 = "123"; });
    add(state.ContactContent, "detail", [](Contact& c) {
        c.ContactNumbers.push_back(std::make_shared<ContactNumber>());
        c.ContactNumbers[0]->Number = "+1 555 0199";
    });

    const struct {
        Text address;
        const char* name;
    } cases[] = {
        {"07700900123", "live"},
        {"+447700 900123", "live"},
        {"123", "short"},
        {"0123", nullptr},
        {"5550123", nullptr},
        {"0199", nullptr},
        {"5550199", "detail"},
        {"5550198", nullptr},
        {"", nullptr},
        {std::nullopt, nullptr},
        {"live@example.org", "live"},
        {"carved@example.org", "carved"},
        {"Live@example.org", nullptr},
        {"live", nullptr},
    };
    const ContactLookup lookup(state);
    for (const auto& c : cases) {
        const auto found = lookup.find(c.address);
        EXPECT_EQ(found ? found->FullName : Text(), c.name ? Text(c.name) : Text())
            << c.address.value_or("absent");
    }
}

TEST(ContactLookup, TellsEmailAddresses) {
    for (const char* address : {"a@b.c", "first.last+tag@mail.example.org"})
        EXPECT_TRUE(IsEmailAddress(address)) << address;
    for (const char* other : {"", "@b.c", "a@", "a@b", "a@.b", "a@b.", "a b@c.d", "a@b@c.d"})
        EXPECT_FALSE(IsEmailAddress(other)) << other;
    EXPECT_FALSE(IsEmailAddress(std::nullopt));
}

}  // namespace
}  // namespace salvor
