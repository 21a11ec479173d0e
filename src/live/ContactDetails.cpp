#include "live/ContactDetails.h"

#include <array>
#include <string>
#include <unordered_map>

#include "live/DAOs.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

constexpr auto kValues = "SELECT * FROM ABMultiValue";
constexpr auto kLabels = "SELECT ROWID, value FROM ABMultiValueLabel";
constexpr auto kEntries =
    "SELECT parent_id, key.value AS part, entry.value AS text FROM ABMultiValueEntry entry INNER "
    "JOIN ABMultiValueEntryKey key ON entry.key = key.ROWID";

constexpr std::array<Text Contact::*, 6> kNumberSlots = {
    &Contact::ContactNo1, &Contact::ContactNo2, &Contact::ContactNo3,
    &Contact::ContactNo4, &Contact::ContactNo5, &Contact::ContactNo6};
constexpr std::array<Text Contact::*, 3> kEmailSlots = {
    &Contact::EmailAddress1, &Contact::EmailAddress2, &Contact::EmailAddress3};

struct AddressPart {
    const char* key;
    Text ContactAddress::*member;
};

constexpr std::array<AddressPart, 9> kAddressParts = {
    {{"Country", &ContactAddress::Country},
     {"Street", &ContactAddress::Street},
     {"ZIP", &ContactAddress::Postcode},
     {"City", &ContactAddress::City},
     {"CountryCode", &ContactAddress::CountryShort},
     {"State", &ContactAddress::StateOrCounty},
     {"username", &ContactAddress::ImUsername},
     {"service", &ContactAddress::ImType},
     {"url", &ContactAddress::ImProfileUrl}}};

using Labels = std::unordered_map<std::int64_t, Text>;
using Entries = std::unordered_map<std::int64_t, ContactAddress>;

/// As they are shown; one label stands at many values.
Labels readLabels(FMDBUtils& database) {
    Labels labels;
    auto rows = database.executeQuery(kLabels);
    while (rows.next()) {
        labels[rows.longLongIntForColumn("ROWID")] =
            StringUtils::FormatAbMultiValueLabel(rows.stringForColumn("value"));
    }
    return labels;
}

/// The parts of postal and messaging addresses, by the multi-value they belong to.
Entries readEntries(FMDBUtils& database) {
    Entries entries;
    constexpr std::size_t kRoomOfAPart = 128;
    auto rows = database.executeQuery(kEntries);
    rows.keepsOfEachRow(kRoomOfAPart);
    while (rows.next()) {
        const auto part = rows.stringForColumn("part");
        for (const auto& [key, member] : kAddressParts) {
            if (part != key) continue;
            entries[rows.longLongIntForColumn("parent_id")].*member = rows.stringForColumn("text");
        }
    }
    return entries;
}

/// Turns the multi-values of one table pass into the details of their contacts.
class DetailFiller {
  public:
    explicit DetailFiller(FMDBUtils& database)
        : labels_(readLabels(database)), entries_(readEntries(database)) {}

    void add(Contact& contact, const ContactValue& value) const {
        switch (static_cast<ContactProperty>(value.property)) {
            case ContactProperty::Phone:
                return addNumber(contact, value);
            case ContactProperty::Email:
                return addEmail(contact, value);
            case ContactProperty::HomePage:
                if (value.value) {
                    detail(contact.ContactHomePages, value)->HomePageUrl = value.value;
                }
                return;
            case ContactProperty::Address:
            case ContactProperty::InstantMessage:
                return addAddress(contact, value);
        }
    }

  private:
    template <class Detail>
    std::shared_ptr<Detail> detail(List<Detail>& list, const ContactValue& value) const {
        auto made = std::make_shared<Detail>();
        made->identifier = value.identifier;
        if (const auto label = labels_.find(value.label); label != labels_.end()) {
            made->Label = label->second;
        }
        list.push_back(made);
        return made;
    }

    template <std::size_t Count>
    static void fillSlot(Contact& contact, const std::array<Text Contact::*, Count>& slots,
                         std::size_t index, const Text& text) {
        if (index < slots.size()) contact.*slots[index] = text;
    }

    void addNumber(Contact& contact, const ContactValue& value) const {
        if (!value.value) return;
        const Text number = DAOs::removeSpecialCharsFromString(*value.value);
        if (contact.ContactNumbers.empty()) contact.OriginalContactNo1 = value.value;
        fillSlot(contact, kNumberSlots, contact.ContactNumbers.size(), number);
        detail(contact.ContactNumbers, value)->Number = number;
    }

    void addEmail(Contact& contact, const ContactValue& value) const {
        if (!value.value) return;
        fillSlot(contact, kEmailSlots, contact.ContactEmailAddresses.size(), value.value);
        detail(contact.ContactEmailAddresses, value)->Email = value.value;
    }

    void addAddress(Contact& contact, const ContactValue& value) const {
        const auto parts = entries_.find(value.uid);
        if (parts == entries_.end()) return;
        const auto address = detail(contact.ContactAddresses, value);
        for (const auto& part : kAddressParts) {
            (*address).*part.member = parts->second.*part.member;
        }
    }

    Labels labels_;
    Entries entries_;
};

template <class Detail>
Text joined(const List<Detail>& list, Text Detail::*member) {
    if (list.empty()) return std::nullopt;
    std::string text;
    for (const auto& entry : list) {
        text += entry == list.front() ? "" : ", ";
        text += ((*entry).*member).view();
    }
    return text;
}

void fillComposites(Contact& contact) {
    std::string name;
    for (const auto& part : {contact.FirstName, contact.MiddleName, contact.LastName}) {
        if (!part || part->empty()) continue;
        name.append(name.empty() ? "" : " ").append(*part);
    }
    if (name.empty())
        contact.FullName = contact.Organization;
    else if (contact.FirstName == name)
        contact.FullName = contact.FirstName;  // the same text, held once
    else
        contact.FullName = name;
    contact.ContactNumbersText = joined(contact.ContactNumbers, &ContactNumber::Number);
    contact.ContactEmailAddresesText =
        joined(contact.ContactEmailAddresses, &ContactEmailAddress::Email);
}

}  // namespace

std::vector<ContactValue> readContactValues(ResultSet rows) {
    constexpr std::size_t kRoomOfADetail = sizeof(ContactNumber) + sizeof(ContactValue);
    std::vector<ContactValue> values;
    rows.keepsOfEachRow(kRoomOfADetail);
    while (rows.next()) {
        values.push_back({rows.longLongIntForColumn("UID"), rows.longLongIntForColumn("record_id"),
                          rows.longLongIntForColumn("property"),
                          rows.longLongIntForColumn("identifier"),
                          rows.longLongIntForColumn("label"), rows.stringForColumn("value")});
    }
    return values;
}

void fillContactDetails(FMDBUtils& database, const List<Contact>& contacts) {
    std::unordered_map<std::int64_t, Contact*> byRowId;
    for (const auto& contact : contacts) byRowId.emplace(contact->RowId, contact.get());
    const DetailFiller filler(database);
    for (const auto& value : readContactValues(database.executeList({kValues}))) {
        const auto owner = byRowId.find(value.recordId);
        if (owner != byRowId.end()) filler.add(*owner->second, value);
    }
    for (const auto& contact : contacts) fillComposites(*contact);
}

}  // namespace salvor
