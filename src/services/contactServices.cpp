#include "services/contactServices.h"

#include "live/ContactDetails.h"
#include "live/PersonColumns.h"
#include "live/RowReading.h"
#include "recovery/ContactSearchsSQLiteRecovery.h"
#include "recovery/ContactsSQLiteRecovery.h"
#include "scan/StoredNames.h"
#include "services/PersonStatement.h"

namespace salvor {
namespace {

void fillPerson(const ResultSet& row, Contact& contact) {
    fillPersonTexts(row, contact);
    contact.CreationDate = row.stringForColumn("DateTimeCreationDate");
    contact.ModificationDate = row.stringForColumn("DateTimeModificationDate");
}

}  // namespace

contactServices::contactServices(ScanState& state)
    : abstractServices(state, ContactsIOS641SqliteDbName) {}

void contactServices::RecoverFromIOSBackup(const DeviceInfo& device) {
    initaliseForRecovery();
    checkForExisitngData(device);
}

void contactServices::initaliseForRecovery() {
    contactsAll_.clear();
    byNumber_.clear();
    byRowId_.clear();
    retrieved_ = 0;
    recovered_ = 0;
}

void contactServices::checkForExisitngData(const DeviceInfo& device) {
    const auto file = ConnectionStringfromDevice(device);
    readPersons(file);
    ContactSearchsSQLiteRecovery(state_, cancelled_).DoRecoveryPath(file.path);
    ContactsSQLiteRecovery(state_, cancelled_).DoRecoveryPath(file.path);
    recovered_ = static_cast<std::int32_t>(state_.DeletedContact.size());
}

void contactServices::readPersons(const BackupFile& file) {
    dbUtils_ = connection(file);
    if (!dbUtils_->openDatabase()) return;
    contactsAll_ = readRows<Contact>(dbUtils_->executeQuery(kPersonStatement), fillPerson);
    numberRows(contactsAll_);
    fillContactDetails(*dbUtils_, contactsAll_);
    retrieved_ = static_cast<std::int32_t>(contactsAll_.size());
    for (const auto& contact : contactsAll_) {
        byRowId_.try_emplace(contact->RowId, contact);
        for (const auto& number : contact->ContactNumbers)
            if (number->Number && !number->Number->empty())
                byNumber_.try_emplace(number->Number, contact);
    }
}

std::optional<BackupFile> contactServices::ImagesConnectionString(const DeviceInfo& device) const {
    const auto files = filesOf(device);
    const auto facts = files->find(ContactsImagesIOS641SqliteDbName);
    if (!facts || facts.size == 0) return std::nullopt;
    return files->open(ContactsImagesIOS641SqliteDbName);
}

std::shared_ptr<Contact> contactServices::FindContactByPhoneNumber(const Text& number) const {
    if (!number) return nullptr;
    const auto found = byNumber_.find(number);
    return found == byNumber_.end() ? nullptr : found->second;
}

std::shared_ptr<Contact> contactServices::FindContactByContactRowId(std::int64_t rowId) const {
    const auto found = byRowId_.find(rowId);
    return found == byRowId_.end() ? nullptr : found->second;
}

}  // namespace salvor
