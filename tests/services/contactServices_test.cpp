#include "services/contactServices.h"

#include "services/PersonStatement.h"
#include "tests/services/CategoryFixture.h"

namespace salvor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kSearchColumns =
    "(docid INTEGER PRIMARY KEY, c0First, c1Last, c2Middle, c3FirstPhonetic, c4MiddlePhonetic, "
    "c5LastPhonetic, c6Organization, c7Department, c8Note, c9Birthday, c10JobTitle, c11Nickname, "
    "c12Prefix, c13Suffix, c14DisplayName, c15Phone, c16Email, c17Address, c18SocialProfile, "
    "c19URL, c20RelatedNames, c21IM, c22Date)";
const std::string kValues = table(
    "ABMultiValue", "(UID INTEGER PRIMARY KEY, record_id, property, identifier, label, value)");

std::string personRow(int key, const std::string& first) {
    return "(" + std::to_string(key) + ",'" + first +
           "',NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,0,NULL,NULL,NULL,NULL,NULL,'" + first +
           "','" + first + "',400000000,400000060,NULL,NULL,NULL,NULL,0,NULL,NULL,NULL,NULL," +
           "2147483647,2147483647,-1,NULL,1)";
}

std::string searchRow(int key, const std::string& first, const std::string& phones) {
    return "(" + std::to_string(key) + ",'" + first +
           "',NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,'" + phones +
           "',NULL,NULL,NULL,NULL,NULL,NULL,NULL)";
}

std::string persons(const std::string& rows) {
    return table("ABPerson", kPersonColumns, rows) + kValues;
}

class Contacts : public CategoryFixture {
  protected:
    std::string firstNameOf(const std::shared_ptr<Contact>& contact) const {
        return contact ? contact->FirstName.value_or("-") : "nobody";
    }

    contactServices service{state};
};

TEST_F(Contacts, FillsEachPersonFromItsColumns) {
    store(ContactsIOS641SqliteDbName,
          persons("(5,'f','l','m','fp','mp','lp','o','d','n',1,'b','j','nick','p','s','fs','ls',"
                  "60,3600,'c','ei','et','eu',0,'dn',NULL,NULL,NULL,0,0,0,'uri',1)") +
              "INSERT INTO ABMultiValue VALUES(1,5,3,0,0,'(030) 12-34'),"
              "(2,5,4,0,0,'f@example.org'),(3,9,3,0,0,'nobody''s')");
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(
        toldAll(service.ContactsAll()),
        ElementsAre(
            "RowId=5|SlNo=1|FirstName=f|MiddleName=m|LastName=l|Nickname=nick|DisplayName=dn|"
            "FullName=f m l|Prefix=p|Suffix=s|FirstPhonetic=fp|MiddlePhonetic=mp|"
            "LastPhonetic=lp|JobTitle=j|Department=d|Organization=o|ContactNo1=0301234|"
            "EmailAddress1=f@example.org|OriginalContactNo1=(030) 12-34|"
            "ContactNumbersText=0301234|ContactEmailAddresesText=f@example.org|"
            "ContactNumbers=[{Number=0301234}]|ContactEmailAddresses=[{Email=f@example.org}]|"
            "CreationDate=2001-01-01 00:01:00|ModificationDate=2001-01-01 01:00:00|"
            "Birthday=b|Note=n|ImageUri=uri|ExternalIdentifier=ei|ExternalModificationTag=et|"
            "ExternalUUID=eu"));
    EXPECT_EQ(service.retrieved(), 1);
    EXPECT_THAT(state.ContactContent, IsEmpty()) << "the category's list is the extraction's";
}

TEST_F(Contacts, LooksUpTheFirstByExactNumberOrRow) {
    store(ContactsIOS641SqliteDbName,
          persons(personRow(1, "Ada") + "," + personRow(2, "Bob") + "," + personRow(3, "Cem")) +
              "INSERT INTO ABMultiValue VALUES(1,3,3,0,0,'+49301'),(2,2,3,0,0,'+49 301'),"
              "(3,2,3,1,0,'+49302'),(4,1,3,0,0,''),(5,1,3,0,0,NULL),(6,1,4,0,0,'+49303')");
    service.RecoverFromIOSBackup(device);
    const struct {
        Text number;
        const char* name;
    } cases[] = {
        {"+49301", "Bob"},    {"+49302", "Bob"}, {"49301", "nobody"},      {"+49 301", "nobody"},
        {"+49303", "nobody"}, {"", "nobody"},    {std::nullopt, "nobody"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(firstNameOf(service.FindContactByPhoneNumber(c.number)), c.name)
            << c.number.value_or("absent");
    EXPECT_EQ(firstNameOf(service.FindContactByContactRowId(3)), "Cem");
    EXPECT_EQ(firstNameOf(service.FindContactByContactRowId(-1)), "nobody");
    EXPECT_EQ(firstNameOf(service.FindContactByContactRowId(4)), "nobody");
}

// Deleted persons come from the search table; the pass over the persons has no patterns.
TEST_F(Contacts, CarvesTheSearchTableAndNeverThePersonTable) {
    const auto live =
        persons(personRow(1, "Ada")) + table("ABPersonFullTextSearch_content", kSearchColumns,
                                             searchRow(1, "Ada", "+49401000001 49401000001 "));
    store(ContactsIOS641SqliteDbName, live,
          {{kSearchColumns, searchRow(22, "Searched", "+49402000001 49402000001 ") + "," +
                                searchRow(23, "First on its page", "+49402000002 ")},
           {kPersonColumns, personRow(11, "Person") + "," + personRow(12, "Another")}});
    service.RecoverFromIOSBackup(device);
    ASSERT_EQ(state.DeletedContact.size(), 2U);
    // Behind a page's free bytes a row may be taken for another shape; the next one is sure.
    EXPECT_EQ(state.DeletedContact[1]->FirstName, "Searched");
    EXPECT_EQ(state.DeletedContact[1]->ContactNo1, "+49402000001");
    EXPECT_EQ(state.AllDeletedContact, state.DeletedContact);
    EXPECT_EQ(state.DeletedContactCount, 2);
    EXPECT_EQ(service.recovered(), 2);
    EXPECT_EQ(service.FindContactByPhoneNumber("+49402000001"), nullptr)
        << "only live contacts are looked up";
}

TEST_F(Contacts, ASecondRunBeginsWithEmptyLists) {
    store(ContactsIOS641SqliteDbName,
          persons(personRow(1, "Ada")) + "INSERT INTO ABMultiValue VALUES(1,1,3,0,0,'+49301')");
    service.RecoverFromIOSBackup(device);
    service.RecoverFromIOSBackup(device);
    EXPECT_EQ(service.ContactsAll().size(), 1U);
    EXPECT_EQ(service.retrieved(), 1);
    std::filesystem::remove(folder / ContactsIOS641SqliteDbName);
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(service.ContactsAll(), IsEmpty());
    EXPECT_EQ(service.retrieved(), 0);
    EXPECT_EQ(service.FindContactByPhoneNumber("+49301"), nullptr);
    EXPECT_EQ(service.FindContactByContactRowId(1), nullptr);
}

TEST_F(Contacts, ImagesAreFoundWhenTheyHoldSomething) {
    const auto images = folder / "images";
    const auto file = images / ContactsImagesIOS641SqliteDbName;
    std::filesystem::create_directories(images);
    const auto found = [this] { return service.ImagesConnectionString(device).has_value(); };
    device.BackupLocation = images.string();
    EXPECT_FALSE(found());
    writeWholeFile(file, "");
    EXPECT_FALSE(found());
    writeWholeFile(file, "x");
    EXPECT_TRUE(found());
    device.BackupLocation = std::nullopt;
    EXPECT_FALSE(found()) << "the scan's own backup";
    useBackup(state, images);
    EXPECT_EQ(service.ImagesConnectionString(device)->path, file);
}

TEST_F(Contacts, ValuesOfAnotherTypeAndMissingTablesLeaveThePersons) {
    store(ContactsIOS641SqliteDbName,
          table("ABPerson", kPersonColumns) +
              "INSERT INTO ABPerson(ROWID, First, Last, CreationDate) VALUES(1, x'FF', 5, 'x')");
    service.RecoverFromIOSBackup(device);
    ASSERT_EQ(service.ContactsAll().size(), 1U);
    const Contact& person = *service.ContactsAll()[0];
    EXPECT_EQ(joined({person.FirstName, person.LastName, person.ContactNo1}), "-|5|");
}

// Kept: statement-texts.
TEST_F(Contacts, ThePersonStatementNamesOneColumnTwice) {
    EXPECT_THAT(std::string(kPersonStatement),
                testing::HasSubstr("FirstSort, LastSort, LastSort, datetime(CreationDate"));
}

// One column less and the statement does not prepare.
TEST_F(Contacts, AnAddressBookOfAnotherLayoutHasNoPersons) {
    store(ContactsIOS641SqliteDbName,
          "CREATE TABLE ABPerson(First); INSERT INTO ABPerson VALUES('Ada')");
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(service.ContactsAll(), IsEmpty());
}

}  // namespace
}  // namespace salvor
