#include "services/ContactLookup.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

#include "scan/ScanState.h"
#include "util/iPhoneNumberUtils.h"

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

// The index answers as a walk with the comparison itself, asked in both directions.
TEST(PhoneIndex, FindsTheFirstEqualNumber) {
    std::istringstream texts(
        "+44 (0)7700 900123|07700900123|900123|0123|123|1 2 3|01234|1234|"
        "\u00E4\u00F6\u00FC|x\u00E4\u00F6\u00FC|12\u00E4\u00F6\u00FC|\U0001F600\U0001F601|"
        "a\U0001F600\U0001F601|0|(0)|00 00|0000|| |+447700900123|7700900123");
    std::vector<Text> numbers;
    for (std::string one; std::getline(texts, one, '|');) numbers.emplace_back(one);
    numbers.emplace_back();
    const auto equal = [](const Text& a, const Text& b) {
        return a && !a->empty() && b && !b->empty() && iPhoneNumberUtils::AreEqual(a, b) &&
               iPhoneNumberUtils::AreEqual(b, a);
    };
    for (std::size_t start = 0; start < numbers.size(); ++start) {
        // Every number comes first once.
        std::vector<Text> known = numbers;
        std::rotate(known.begin(), known.begin() + static_cast<std::ptrdiff_t>(start), known.end());
        PhoneIndex index;
        for (std::size_t i = 0; i < known.size(); ++i) index.add(known[i], i);
        for (const auto& number : numbers) {
            const auto first = std::find_if(known.begin(), known.end(),
                                            [&](const Text& k) { return equal(number, k); });
            const auto expected =
                first == known.end()
                    ? std::nullopt
                    : std::optional(static_cast<std::size_t>(first - known.begin()));
            EXPECT_EQ(index.find(number), expected) << number.value_or("absent") << " " << start;
        }
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
