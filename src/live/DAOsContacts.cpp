#include "live/ContactDetails.h"
#include "live/DAOs.h"
#include "live/PersonColumns.h"
#include "live/RowDates.h"
#include "live/RowReading.h"
#include "sql/SqlFormat.h"

namespace salvor {
namespace {

constexpr auto kPersons = "SELECT * FROM ABPerson";
constexpr auto kValuesOfRecord = "SELECT * FROM ABMultiValue WHERE Record_Id = ?";
constexpr auto kPhoneValues = "SELECT * FROM ABMultiValue WHERE property = 3";
constexpr auto kContactRowIds = "SELECT ROWID,First FROM ABPerson";
// Never prepares. Kept: contact-never-exists.
constexpr auto kContactExists = "SELECT * FROM ABPerson WHERE ROW_ID = ?";
constexpr auto kNameForAddress =
    "SELECT First as Name FROM ABMultiValue  INNER JOIN ABPerson ON ABMultiValue.record_id = "
    "ABPerson.ROWID WHERE REPLACE(REPLACE(REPLACE(REPLACE(REPLACE(value ,')' "
    ",''),'+',''),'-',''),' ',''),'(','') \t  Like '%%%@'";

void fillPerson(const ResultSet& row, Contact& contact) {
    fillPersonTexts(row, contact);
    contact.OriginalFirstName = contact.FirstName;
    contact.OriginalLastName = contact.LastName;
    contact.NickName = contact.Nickname;
    contact.Guid = row.stringForColumn("guid");
    contact.CreationDate = textOfReferenceColumn(row, "CreationDate");
    contact.ModificationDate = textOfReferenceColumn(row, "ModificationDate");
    contact.CreatedDate = contact.CreationDate;
    contact.ModifiedDate = contact.ModificationDate;
    contact.OriginalCreationDate = row.doubleForColumn("CreationDate");
    contact.OriginalModificationDate = row.doubleForColumn("ModificationDate");
}

std::vector<ContactValue> cleaned(std::vector<ContactValue> values) {
    for (auto& value : values) {
        const bool isPhone = value.property == static_cast<std::int64_t>(ContactProperty::Phone);
        if (isPhone && value.value) {
            value.value = DAOs::removeSpecialCharsFromString(*value.value);
        }
    }
    return values;
}

}  // namespace

List<Contact> DAOs::GetContacts() {
    const auto database = openCategory(state_.ADDRESSBOOK_DATABASE);
    auto list = readRows<Contact>(database->executeList({kPersons}), fillPerson);
    numberRows(list);
    fillContactDetails(*database, list);
    append(state_.AllContactContent, list);
    state_.ContactCount = static_cast<std::int32_t>(list.size());
    return list;
}

std::vector<ContactValue> DAOs::GetContactProperty(std::int64_t recordId) {
    return cleaned(readContactValues(
        open(state_.ADDRESSBOOK_DATABASE)->executeQuery(kValuesOfRecord, {recordId})));
}

std::vector<ContactValue> DAOs::GetContactPhoneNum(std::int64_t recordId) {
    auto values =
        cleaned(readContactValues(open(state_.ADDRESSBOOK_DATABASE)->executeQuery(kPhoneValues)));
    // The statement reads the numbers of all persons.
    std::erase_if(values,
                  [recordId](const ContactValue& value) { return value.recordId != recordId; });
    return values;
}

std::map<std::int64_t, Text> DAOs::GetAllContactRowID() {
    return textsByRowId(state_.ADDRESSBOOK_DATABASE, kContactRowIds, "First");
}

bool DAOs::isDeletedContacted(std::int64_t rowId) {
    return hasRow(state_.ADDRESSBOOK_DATABASE, kContactExists, {rowId});
}

Text DAOs::GetNameForAddress(const Text& number) {
    auto rows =
        open(state_.ADDRESSBOOK_DATABASE)->executeQuery(formatSql(kNameForAddress, {number}));
    return rows.next() ? rows.stringForColumn("Name") : std::nullopt;
}

std::string DAOs::removeSpecialCharsFromString(std::string_view text) {
    std::string kept(text);
    std::erase_if(kept, [](char c) { return c == '(' || c == ')' || c == '-' || c == ' '; });
    return kept;
}

}  // namespace salvor
