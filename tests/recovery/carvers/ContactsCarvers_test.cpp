#include "recovery/carvers/ContactSearchsSQLiteRecovery.h"
#include "recovery/carvers/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/carvers/ContactsSQLiteRecovery.h"
#include "tests/recovery/carvers/CarverProbe.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

using SearchProbe = CarverProbe<ContactSearchsSQLiteRecovery, Contact>;
using PersonProbe = CarverProbe<ContactsSQLiteRecovery, Contact>;
using ValueProbe = CarverProbe<ContactsABMultiValueSQLiteRecovery, ContactABMultiValue>;

class ContactsCarvers : public CategoryCarverTest {
  protected:
    template <class Carver, class Record, class Describe>
    Texts keptByFilter(Carver& carver, const std::vector<Record>& records, Describe describe) {
        carver.fullDBPath = database;
        for (const auto& record : records)
            carver.RecoveredData.push_back(std::make_shared<Record>(record));
        carver.filterMessages();
        Texts names;
        for (const auto& record : carver.RecoveredFiltered)
            names.push_back(describe(dynamic_cast<const Record&>(*record)));
        return names;
    }

    static Contact person(const Text& first, const Text& last, const Text& middle = {}) {
        Contact contact;
        contact.FirstName = first;
        contact.LastName = last;
        contact.MiddleName = middle;
        return contact;
    }
    static std::string nameOf(const Contact& contact) {
        return contact.FirstName.value_or("-") + "/" + contact.LastName.value_or("-");
    }

    SearchProbe search{state};
    PersonProbe people{state};
};

TEST_F(ContactsCarvers, SplitNumbersAtBlanks) {
    struct Case {
        const char* text;
        Text first;
        Text second;
        Texts numbers;
    };
    const Case cases[] = {
        {"+1 5551234 5559876", "+15551234", "5559876", {"+1", "5551234", "5559876"}},
        {"5551234", "5551234", std::nullopt, {"5551234"}},
        {"+1 5551234", "+15551234", "5551234", {"+1", "5551234"}},
        {"5551234 5559876", "5551234", "5559876", {"5551234", "5559876"}},
        // Three or more overwrite the second number.
        {"5551234 5559876 5550000", "5551234", "5550000", {"5551234", "5559876", "5550000"}},
        {"1 2 3 4 5", "12", "4", {"1", "2", "3", "4", "5"}},
        {"+1  5551234", "+1", "5551234", {"+1", "", "5551234"}},
        {"", "", std::nullopt, {}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.text);
        const Contact& contact = search.filled("c15Phone", one.text);
        EXPECT_EQ(contact.C15Phone, one.text);
        EXPECT_EQ(contact.ContactNo1, one.first);
        EXPECT_EQ(contact.ContactNo2, one.second);
        EXPECT_EQ(texts(contact.ContactNumbers, &ContactNumber::Number), one.numbers);
        for (const auto& number : contact.ContactNumbers) EXPECT_EQ(number->Label, "Other Phone");
    }
}

TEST_F(ContactsCarvers, SplitMailAddressesButPostalOnesOnlyWhenThereAreNone) {
    const Contact& contact = search.filled("c16Email", "a@x b@x c@x d@x");
    EXPECT_EQ(contact.EmailAddress1, "a@x");
    EXPECT_EQ(contact.EmailAddress3, "c@x");
    EXPECT_EQ(texts(contact.ContactEmailAddresses, &ContactEmailAddress::Email),
              (Texts{"a@x", "b@x", "c@x", "d@x"}));
    EXPECT_EQ(contact.ContactEmailAddresses[0]->Label, "Other Email");
    search.fill("c17Address", "Long Road 5");
    EXPECT_EQ(contact.C17Address, "Long Road 5");
    EXPECT_TRUE(contact.ContactAddresses.empty());
    EXPECT_EQ(
        texts(search.filled("c17Address", std::string()).ContactAddresses, &ContactAddress::Street),
        Texts{""});
    EXPECT_EQ(search.filled("c17Address", std::nullopt).ContactAddresses.size(), 1U);
}

TEST_F(ContactsCarvers, ShiftTheDataToWhereANumberBegins) {
    EXPECT_EQ(search.position("c15Phone", "+4912345"), 0);
    EXPECT_EQ(search.position("c15Phone", "xy512345"), 2);
    EXPECT_EQ(search.position("c15Phone",
                              "x\x1E"
                              "abcdef"),
              1);
    EXPECT_EQ(search.position("c15Phone", "9912345"), 2) << "a 9 does not begin a number";
    EXPECT_EQ(search.position("c15Phone", "abcdef5"), 0);
    EXPECT_EQ(search.position("c15Phone", "xy5123"), 0) << "too short to tell";
    EXPECT_EQ(search.position("c0First", "xy512345"), -100);
}

TEST_F(ContactsCarvers, ListWhatTheSearchTableLostAndTestNothingAgainstLiveRows) {
    addSignature(state, "AddressBook.sqlite", "ABPersonFullTextSearch_content",
                 "[1];[1];[0];[19];[21];[27]", {{"c0First", 3}, {"c1Last", 4}, {"c15Phone", 5}});
    sql("CREATE TABLE ABPersonFullTextSearch_content (docid INTEGER PRIMARY KEY, c0First, c1Last, "
        "c15Phone); CREATE TABLE gone (docid INTEGER PRIMARY KEY, a, b, c); INSERT INTO gone "
        "VALUES (2, 'Ann', 'Live', '5551234'), (3, 'Ben', 'Gone', '5559876')");
    sql("DROP TABLE gone");
    search.DoRecoveryPath(database);
    EXPECT_TRUE(state.DeletedContact.empty()) << "no live row, no patterns";

    sql("INSERT INTO ABPersonFullTextSearch_content VALUES (2, 'Ann', 'Live', '5551234')");
    SearchProbe again(state);
    again.DoRecoveryPath(database);
    EXPECT_THAT(texts(state.DeletedContact, &Contact::FirstName),
                testing::UnorderedElementsAre("Ann", "Ben"));
    EXPECT_EQ(state.DeletedContact, state.AllDeletedContact);
    EXPECT_EQ(state.DeletedContactCount, 2);
    EXPECT_TRUE(again.RecoveredFiltered.empty());
    again.begin();
    again.add();
    EXPECT_EQ(state.DeletedContactCount, 2) << "a record without any column is passed over";
}

TEST_F(ContactsCarvers, TheFiltersComparePlainValues) {
    sql("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First, Last); "
        "INSERT INTO ABPerson VALUES (1, 12, 34), (2, 56, NULL); "
        "CREATE TABLE ABPersonFullTextSearch_content (c0First, c1Last, c2Middle); "
        "INSERT INTO ABPersonFullTextSearch_content VALUES (12, 34, NULL)");
    const std::vector<Contact> contacts{person("12", "34"), person("56", {}), person("56", "34"),
                                        person("Ann", "34"), person({}, {})};
    EXPECT_EQ(keptByFilter(people, contacts, nameOf), (Texts{"56/34", "Ann/34"}));
    EXPECT_EQ(keptByFilter(search, contacts, nameOf), (Texts{"56/-", "56/34", "Ann/34", "-/-"}));
    search.RecoveredData.clear();
    search.RecoveredFiltered.clear();
    EXPECT_EQ(keptByFilter(search, std::vector{person("12", "34", "5")}, nameOf), Texts{"12/34"});
}

TEST_F(ContactsCarvers, FillAPersonByName) {
    const std::vector<std::pair<std::string, Text Contact::*>> fields{
        {"First", &Contact::FirstName},
        {"Last", &Contact::LastName},
        {"FirstPhonetic", &Contact::FirstPhonetic},
        {"MiddlePhonetic", &Contact::MiddlePhonetic},
        {"LastPhonetic", &Contact::LastPhonetic},
        {"Organization", &Contact::Organization},
        {"Department", &Contact::Department},
        {"Note", &Contact::Note},
        {"Birthday", &Contact::Birthday},
        {"JobTitle", &Contact::JobTitle},
        {"Nickname", &Contact::Nickname},
        {"Prefix", &Contact::Prefix},
        {"Suffix", &Contact::Suffix},
        {"DisplayName", &Contact::DisplayName},
        {"ImageURI", &Contact::ImageUri},
        {"Guid", &Contact::Guid},
    };
    for (const auto& [name, member] : fields)
        EXPECT_EQ(people.filled(name, name + "!").*member, name + "!");
    EXPECT_EQ(people.filled("Middle", "M").MiddleName, std::nullopt) << "no name of this table";
}

TEST_F(ContactsCarvers, OnlyDatesToComeAreShown) {
    const double future = DateUtils::now().secondsSinceReference + 86400;
    const Contact& contact = people.filled("CreationDate", 1000.0);
    EXPECT_EQ(contact.CreationDate, " ");
    EXPECT_EQ(contact.OriginalCreationDate, 1000.0);
    people.fill("ModificationDate", future);
    EXPECT_EQ(contact.ModificationDate, DateUtils::DateTimeToString(Date{future}));
    EXPECT_EQ(contact.OriginalModificationDate, future);
    EXPECT_EQ(people.filled("CreationDate", "1000").CreationDate, std::nullopt) << "no number";
}

// The pass of persons sets no patterns, so that it finds nothing.
TEST_F(ContactsCarvers, APersonPassFindsNothing) {
    addSignature(state, "AddressBook.sqlite", "ABPerson", "[1];[1];[0];[19];[21]",
                 {{"First", 3}, {"Last", 4}});
    sql("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First, Last); "
        "INSERT INTO ABPerson VALUES (1, 'Ann', 'Live'); "
        "CREATE TABLE gone (ROWID INTEGER PRIMARY KEY, a, b); "
        "INSERT INTO gone VALUES (1, 'fills the end of the page', ''), (2, 'Ben', 'Gone'), "
        "(3, 'Cat', 'Gone')");
    sql("DROP TABLE gone");
    state.DeletedContact.push_back(std::make_shared<Contact>(person("old", "one")));
    people.DoRecoveryPath(database);
    EXPECT_EQ(state.DeletedContact.size(), 1U);
    EXPECT_EQ(people.RecoveredData.size(), 1U);

    // Neither does one that selects them while no person is left.
    sql("CREATE TABLE kept AS SELECT * FROM ABPerson; DELETE FROM ABPerson");
    PersonProbe nobody(state);
    nobody.setSignature(database);
    EXPECT_TRUE(nobody.patterns().empty());
    sql("INSERT INTO ABPerson SELECT * FROM kept");

    PersonProbe withPatterns(state);
    withPatterns.setSignature(database);
    withPatterns.DoRecoveryPath(database);
    EXPECT_THAT(texts(state.DeletedContact, &Contact::FirstName),
                testing::UnorderedElementsAre("old", "Ben", "Cat"));
}

TEST_F(ContactsCarvers, FillAndFilterMultiValues) {
    ValueProbe values(state);
    ContactABMultiValue& row = values.filled("RecordId", std::int64_t{1LL << 40});
    for (const char* name : {"Property", "Identifier", "Label"}) values.fill(name, std::int64_t{4});
    values.fill("Value", "77");
    values.fill("Guid", "G");
    EXPECT_EQ(row.RecordId, 1LL << 40);
    EXPECT_EQ(row.Property + row.Identifier + row.Label, 12);
    EXPECT_EQ(row.value, "77");
    EXPECT_EQ(row.Guid, "G");
    const ContactABMultiValue same = row;
    EXPECT_TRUE(row.IsEqual(same));
    for (const auto member : {&ContactABMultiValue::RecordId, &ContactABMultiValue::Property,
                              &ContactABMultiValue::Identifier, &ContactABMultiValue::Label}) {
        ContactABMultiValue other = row;
        ++(other.*member);
        EXPECT_FALSE(row.IsEqual(other));
    }
    for (const auto member : {&ContactABMultiValue::value, &ContactABMultiValue::Guid}) {
        ContactABMultiValue other = row;
        other.*member = "other";
        EXPECT_FALSE(row.IsEqual(other));
    }

    sql("CREATE TABLE ABMultiValue (record_id, property, identifier, value, guid); "
        "INSERT INTO ABMultiValue VALUES (1, 3, 0, 77, 'G'), (2, 3, 0, NULL, 'G')");
    const auto value = [](std::int64_t record, const Text& text) {
        ContactABMultiValue one;
        one.RecordId = record;
        one.Property = 3;
        one.value = text;
        return one;
    };
    EXPECT_EQ(
        keptByFilter(values,
                     std::vector{value(1, "77"), value(2, {}), value(2, "77"), value(1, "a b")},
                     [](const ContactABMultiValue& one) {
                         return std::to_string(one.RecordId) + one.value.value_or("-");
                     }),
        (Texts{"277", "1a b"}));
}

}  // namespace
}  // namespace salvor
