#include "recovery/ContactsSQLiteRecovery.h"

#include "util/DateUtils.h"

namespace salvor {
namespace {

// Kept: future-dates-only.
template <double Contact::*Raw, salvor::Text Contact::*Shown>
void storeDate(Contact& contact, const OptionalColumnValue& value) {
    if (!value || std::holds_alternative<std::string>(*value)) return;
    contact.*Raw = columnDouble(value);
    const auto date = DateUtils::DoubleToIOSDateTime(contact.*Raw);
    if (!date) return;
    contact.*Shown = *date > DateUtils::now() ? DateUtils::DateTimeToString(*date) : " ";
}

constexpr ColumnAttribute<Contact> kAttributes[] = {
    {"First", storeText<&Contact::FirstName>},
    {"Last", storeText<&Contact::LastName>},
    {"FirstPhonetic", storeText<&Contact::FirstPhonetic>},
    {"MiddlePhonetic", storeText<&Contact::MiddlePhonetic>},
    {"LastPhonetic", storeText<&Contact::LastPhonetic>},
    {"Organization", storeText<&Contact::Organization>},
    {"Department", storeText<&Contact::Department>},
    {"Note", storeText<&Contact::Note>},
    {"Birthday", storeText<&Contact::Birthday>},
    {"JobTitle", storeText<&Contact::JobTitle>},
    {"Nickname", storeText<&Contact::Nickname>},
    {"Prefix", storeText<&Contact::Prefix>},
    {"Suffix", storeText<&Contact::Suffix>},
    {"DisplayName", storeText<&Contact::DisplayName>},
    {"ImageURI", storeText<&Contact::ImageUri>},
    {"Guid", storeText<&Contact::Guid>},
    {"CreationDate", storeDate<&Contact::OriginalCreationDate, &Contact::CreationDate>},
    {"ModificationDate", storeDate<&Contact::OriginalModificationDate, &Contact::ModificationDate>},
};

}  // namespace

constinit const SignatureUse<Contact> ContactsSQLiteRecovery::kSignature{
    {"HomeDomain", "AddressBook.sqlite", "ABPerson"}, kAttributes};

ContactsSQLiteRecovery::ContactsSQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : CategoryCarver(state, std::move(cancelled), kSignature) {}

void ContactsSQLiteRecovery::DoRecoveryPath(const std::filesystem::path& path) {
    fullDBPath = path.string();
    RecoveredData.assign(state_.DeletedContact.begin(), state_.DeletedContact.end());
    // The patterns are chosen: past the record carver, which would choose them.
    AbstractSqLiteRecovery::DoRecoveryPath(path);  // NOLINT(bugprone-parent-virtual-call)
}

void ContactsSQLiteRecovery::setSignature(const std::filesystem::path& path) {
    fullDBPath = path.string();
    tablePatterns = choosePatterns();
}

void ContactsSQLiteRecovery::recordCarved(const std::shared_ptr<Contact>& contact) {
    incrementRecoveryCount();
    state_.AllDeletedContact.push_back(contact);
    state_.DeletedContact.push_back(contact);
    RecoveredData.push_back(contact);
    ++state_.progress.recordsFound;
    state_.updateUIfoundRecoveredData();
}

void ContactsSQLiteRecovery::filterMessages() {
    keepRecordsWithoutLiveRow([](const Contact& contact) -> std::optional<std::string> {
        if (!contact.FirstName && !contact.LastName) return std::nullopt;
        return "SELECT ROWID, First, Last FROM ABPerson where " +
               equalOrNull("First", contact.FirstName) + " AND" +
               equalOrNull("Last", contact.LastName);
    });
}

std::int32_t ContactsSQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletedContactCount = count;
    return count;
}

std::int32_t ContactsSQLiteRecovery::incrementRecoveryCount() {
    return ++state_.DeletedContactCount;
}

}  // namespace salvor
