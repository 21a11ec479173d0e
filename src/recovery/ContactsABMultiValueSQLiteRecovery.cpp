#include "recovery/ContactsABMultiValueSQLiteRecovery.h"

#include <fmt/format.h>

namespace salvor {
namespace {

constexpr ColumnAttribute<ContactABMultiValue> kAttributes[] = {
    {"RecordId", storeInteger<&ContactABMultiValue::RecordId>},
    {"Property", storeInteger<&ContactABMultiValue::Property>},
    {"Identifier", storeInteger<&ContactABMultiValue::Identifier>},
    {"Label", storeInteger<&ContactABMultiValue::Label>},
    {"Value", storeText<&ContactABMultiValue::value>},
    {"Guid", storeText<&ContactABMultiValue::Guid>},
};

}  // namespace

constinit const SignatureUse<ContactABMultiValue> ContactsABMultiValueSQLiteRecovery::kSignature{
    {"HomeDomain", "AddressBook.sqlite", "ABMultiValue"}, kAttributes};

ContactsABMultiValueSQLiteRecovery::ContactsABMultiValueSQLiteRecovery(ScanState& state,
                                                                       std::stop_token cancelled)
    : CategoryCarver(state, std::move(cancelled), kSignature) {}

void ContactsABMultiValueSQLiteRecovery::recordCarved(
    const std::shared_ptr<ContactABMultiValue>& value) {
    RecoveredData.push_back(value);
}

void ContactsABMultiValueSQLiteRecovery::filterMessages() {
    keepRecordsWithoutLiveRow([](const ContactABMultiValue& row) {
        return fmt::format(
                   "SELECT record_id, property, identifier, value, guid Last FROM ABMultiValue "
                   "where "
                   "record_id={} AND property={} AND identifier={} AND",
                   row.RecordId, row.Property, row.Identifier) +
               equalOrNull("value", row.value);
    });
}

}  // namespace salvor
