#include "recovery/ContactSearchsSQLiteRecovery.h"
#include "recovery/ContactsABMultiValueSQLiteRecovery.h"
#include "recovery/ContactsSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

using testing::UnorderedElementsAre;

using SearchProbe = CarverProbe<ContactSearchsSQLiteRecovery, Contact>;
using PersonProbe = CarverProbe<ContactsSQLiteRecovery, Contact>;
using ValueProbe = CarverProbe<ContactsABMultiValueSQLiteRecovery, ContactABMultiValue>;

class ContactsCarvers : public CategoryCarverTest {
  protected:
    template <class Carver, class Record, class Describe>
    Texts keptByFilter(Carver& carver, const std::vector<Record>& records, Describe describe) {
        carver.fullDBPath = database;
        carver.RecoveredData.clear();
        carver.RecoveredFiltered.clear();
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
        return joined({contact.FirstName, contact.LastName});
    }

    SearchProbe search{state};
    PersonProbe people{state};
};

TEST_F(ContactsCarvers, SplitNumbersAtBlanks) {
    const struct {
        const char* text;
        Text first, second;
        Texts numbers;
    } cases[] = {
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
        const Contact& contact = search.filled({{"c15Phone", one.text}});
        EXPECT_EQ(contact.C15Phone, one.text);
        EXPECT_EQ(contact.ContactNo1, one.first);
        EXPECT_EQ(contact.ContactNo2, one.second);
        EXPECT_EQ(textsOf(contact.ContactNumbers, &ContactNumber::Number), one.numbers);
        for (const auto& number : contact.ContactNumbers) EXPECT_EQ(number->Label, "Other Phone");
    }
}

TEST_F(ContactsCarvers, SplitMailAddressesButPostalOnesOnlyWhenThereAreNone) {
    const Contact& contact =
        search.filled({{"c16Email", "a@x b@x c@x d@x"}, {"c17Address", "Long Road 5"}});
    EXPECT_EQ(joined({contact.EmailAddress1, contact.EmailAddress3, contact.C17Address}),
              "a@x|c@x|Long Road 5");
    EXPECT_EQ(textsOf(contact.ContactEmailAddresses, &ContactEmailAddress::Email),
              (Texts{"a@x", "b@x", "c@x", "d@x"}));
    EXPECT_EQ(contact.ContactEmailAddresses[0]->Label, "Other Email");
    EXPECT_TRUE(contact.ContactAddresses.empty());
    const auto streets = [this](const OptionalColumnValue& address) {
        return textsOf(search.filled({{"c17Address", address}}).ContactAddresses,
                       &ContactAddress::Street);
    };
    EXPECT_EQ(streets(std::string()), Texts{""});
    EXPECT_EQ(streets(std::nullopt).size(), 1U);
}

TEST_F(ContactsCarvers, ShiftTheDataToWhereANumberBegins) {
    const std::tuple<const char*, const char*, int> cases[] = {
        {"c15Phone", "+4912345", 0},
        {"c15Phone", "xy512345", 2},
        {"c15Phone",
         "x\x1E"
         "abcdef",
         1},
        {"c15Phone", "9912345", 2},  // a 9 does not begin a number
        {"c15Phone", "abcdef5", 0},
        {"c15Phone", "xy5123", 0},  // too short to tell
        {"c0First", "xy512345", -100}};
    for (const auto& [name, text, shift] : cases)
        EXPECT_EQ(search.position(name, text), shift) << name << " " << text;
}

TEST_F(ContactsCarvers, ListWhatTheSearchTableLostAndTestNothingAgainstLiveRows) {
    signature("AddressBook.sqlite", "ABPersonFullTextSearch_content", "[1];[1];[0];[19];[21];[27]",
              {{"c0First", 3}, {"c1Last", 4}, {"c15Phone", 5}});
    sql("CREATE TABLE ABPersonFullTextSearch_content (docid INTEGER PRIMARY KEY, c0First, c1Last, "
        "c15Phone)",
        {{"(docid INTEGER PRIMARY KEY, a, b, c)",
          "(2, 'Ann', 'Live', '5551234'), (3, 'Ben', 'Gone', '5559876')"}});
    search.DoRecoveryPath(database);
    EXPECT_TRUE(state.DeletedContact.empty()) << "no live row, no patterns";

    sql("INSERT INTO ABPersonFullTextSearch_content VALUES (2, 'Ann', 'Live', '5551234')");
    SearchProbe again(state);
    again.DoRecoveryPath(database);
    EXPECT_THAT(textsOf(state.DeletedContact, &Contact::FirstName),
                UnorderedElementsAre("Ann", "Ben"));
    EXPECT_EQ(state.DeletedContact, state.AllDeletedContact);
    EXPECT_TRUE(again.RecoveredFiltered.empty());
    again.add({});
    EXPECT_EQ(state.DeletedContactCount, 2) << "a record without any column is passed over";
}

TEST_F(ContactsCarvers, TheFiltersComparePlainValues) {
    sql("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First, Last); "
        "INSERT INTO ABPerson VALUES (1, 12, 34), (2, 56, NULL); "
        "CREATE TABLE ABPersonFullTextSearch_content (c0First, c1Last, c2Middle); "
        "INSERT INTO ABPersonFullTextSearch_content VALUES (12, 34, NULL)");
    const std::vector<Contact> contacts{person("12", "34"), person("56", {}), person("56", "34"),
                                        person("Ann", "34"), person({}, {})};
    EXPECT_EQ(keptByFilter(people, contacts, nameOf), (Texts{"56|34", "Ann|34"}));
    EXPECT_EQ(keptByFilter(search, contacts, nameOf), (Texts{"56|-", "56|34", "Ann|34", "-|-"}));
    EXPECT_EQ(keptByFilter(search, std::vector{person("12", "34", "5")}, nameOf), Texts{"12|34"});
}

TEST_F(ContactsCarvers, FillAPersonByName) {
    PersonProbe::Columns columns;
    for (const char* name :
         {"First", "Last", "Middle", "FirstPhonetic", "MiddlePhonetic", "LastPhonetic",
          "Organization", "Department", "Note", "Birthday", "JobTitle", "Nickname", "Prefix",
          "Suffix", "DisplayName", "ImageURI", "Guid"})
        columns.emplace_back(name, std::string(name) + "!");
    // "Middle" is no name of this table.
    EXPECT_EQ(told(people.filled(columns)),
              "Recovered=true|Guid=Guid!|FirstName=First!|LastName=Last!|Nickname=Nickname!|"
              "DisplayName=DisplayName!|Prefix=Prefix!|Suffix=Suffix!|"
              "FirstPhonetic=FirstPhonetic!|MiddlePhonetic=MiddlePhonetic!|"
              "LastPhonetic=LastPhonetic!|JobTitle=JobTitle!|Department=Department!|"
              "Organization=Organization!|Birthday=Birthday!|Note=Note!|ImageUri=ImageURI!");
}

TEST_F(ContactsCarvers, OnlyDatesToComeAreShown) {
    const double future = DateUtils::now().secondsSinceReference + 86400;
    const Contact& contact =
        people.filled({{"CreationDate", 1000.0}, {"ModificationDate", future}});
    EXPECT_EQ(contact.CreationDate, " ");
    EXPECT_EQ(contact.OriginalCreationDate, 1000.0);
    EXPECT_EQ(contact.ModificationDate, DateUtils::DateTimeToString(Date{future}));
    EXPECT_EQ(contact.OriginalModificationDate, future);
    EXPECT_EQ(people.filled({{"CreationDate", "1000"}}).CreationDate, std::nullopt) << "no number";
}

// The pass of persons sets no patterns, so that it finds nothing.
TEST_F(ContactsCarvers, APersonPassFindsNothing) {
    signature("AddressBook.sqlite", "ABPerson", "[1];[1];[0];[19];[21]",
              {{"First", 3}, {"Last", 4}});
    sql("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First, Last); "
        "INSERT INTO ABPerson VALUES (1, 'Ann', 'Live')",
        {{"(ROWID INTEGER PRIMARY KEY, a, b)",
          "(1, 'fills the end of the page', ''), (2, 'Ben', 'Gone'), (3, 'Cat', 'Gone')"}});
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
    EXPECT_THAT(textsOf(state.DeletedContact, &Contact::FirstName),
                UnorderedElementsAre("old", "Ben", "Cat"));
}

TEST_F(ContactsCarvers, FillAndFilterMultiValues) {
    ValueProbe values(state);
    const ContactABMultiValue row = values.filled({{"RecordId", std::int64_t{1LL << 40}},
                                                   {"Property", std::int64_t{3}},
                                                   {"Identifier", std::int64_t{4}},
                                                   {"Label", std::int64_t{5}},
                                                   {"Value", "77"},
                                                   {"Guid", "G"}});
    EXPECT_EQ(told(row),
              "Recovered=true|RecordId=1099511627776|Property=3|Identifier=4|Label=5|value=77|"
              "Guid=G");
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
    const auto describe = [](const ContactABMultiValue& one) {
        return joined({std::to_string(one.RecordId), one.value});
    };
    EXPECT_EQ(
        keptByFilter(values,
                     std::vector{value(1, "77"), value(2, {}), value(2, "77"), value(1, "a b")},
                     describe),
        (Texts{"2|77", "1|a b"}));
}

}  // namespace
}  // namespace salvor
