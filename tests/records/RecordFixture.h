#pragma once

#include <map>
#include <string>
#include <vector>

#include "records/Contact.h"
#include "records/RecordContext.h"

namespace salvor {

/// Answers from maps and notes whose WhatsApp partners it was asked for.
struct FakeLookups : DatabaseLookups {
    std::map<std::int32_t, Text> handles, handlesById;
    std::map<Text, std::string> partners;
    std::vector<std::string> askedPartners;

    Text GetPhoneNumberForHID(std::int32_t id, const Text& fallback) override {
        return handles.contains(id) ? handles[id] : fallback;
    }
    Text GetPhoneNumberForID(std::int32_t id, const Text& fallback) override {
        return handlesById.contains(id) ? handlesById[id] : fallback;
    }
    Text getLocationFromLocationID(std::int64_t id) override { return "at " + std::to_string(id); }
    Text GetWhatsAppContactName(const Text& jid) override {
        askedPartners.push_back(jid.value_or("(absent)"));
        if (!jid || !partners.contains(jid)) return std::nullopt;
        return partners[jid];
    }
};

struct FakeContext : RecordContext {
    std::shared_ptr<FakeLookups> database = std::make_shared<FakeLookups>();
    std::int64_t unknown = 0;
    int calendarsOpened = 0;
    List<Contact> live, deleted;
    std::size_t calls = 0;

    std::shared_ptr<DatabaseLookups> lookups() const override { return database; }
    std::shared_ptr<DatabaseLookups> openCalendarLookups() override {
        ++calendarsOpened;
        return database;
    }
    std::int64_t nextUnknownNumber() override { return ++unknown; }
    const List<Contact>& liveContacts() const override { return live; }
    const List<Contact>& deletedContacts() const override { return deleted; }
    std::size_t deletedCallLogCount() const override { return calls; }
};

/// A contact with these numbers in its first slots.
inline std::shared_ptr<Contact> contactOf(const char* nickName, const std::vector<Text>& numbers) {
    auto made = std::make_shared<Contact>();
    made->NickName = nickName;
    Text Contact::*slots[] = {&Contact::ContactNo1, &Contact::ContactNo2, &Contact::ContactNo3,
                              &Contact::ContactNo4};
    for (std::size_t i = 0; i < numbers.size(); ++i) (*made).*slots[i] = numbers[i];
    return made;
}

}  // namespace salvor
