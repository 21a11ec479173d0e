#include "backup/extraction/CategoryDatabases.h"

#include <array>
#include <system_error>

namespace salvor {
namespace {

constexpr auto kFirstWhatsApp = "1b6b187a1b60b9ae8b720c79e2c67f472bab09c0";

struct Facts {
    std::int32_t iOSMajorVersion = 0;
    bool hasFirstWhatsApp = false;
};

bool always(const Facts&) {
    return true;
}
template <std::int32_t Version>
bool from(const Facts& facts) {
    return facts.iOSMajorVersion >= Version;
}
bool withoutFirstWhatsApp(const Facts& facts) {
    return !facts.hasFirstWhatsApp;
}

struct NameRule {
    std::string ScanState::*field;
    const char* storedName;
    bool (*holds)(const Facts&);
};

// In order; a later rule that holds replaces an earlier one of its field. The logical locations
// are `domain, path` of the files.
constexpr std::array kRules{
    // HomeDomain, Library/SMS/sms.db
    NameRule{&ScanState::SMS_DATABASE, "3d0d7e5fb2ce288813306e4d4636395e047a3d28", always},
    // HomeDomain, Library/AddressBook/AddressBook.sqlitedb
    NameRule{&ScanState::ADDRESSBOOK_DATABASE, "31bb7ba8914766d4ba40d6dfb6113c8b614be442", always},
    // HomeDomain, Library/Calendar/Calendar.sqlitedb
    NameRule{&ScanState::CALENDAR_DATABASE, "2041457d5fe04d39d0ab481178355df6781e6858", always},
    // HomeDomain, Library/Notes/notes.sqlite
    NameRule{&ScanState::NOTES_DATABASE, "ca3bc056d4da0bbf88b5fb3be254f3b7147e639c", always},
    // WirelessDomain, Library/CallHistory/call_history.db
    NameRule{&ScanState::CALLHISTORY_DATABASE, "2b2b0084a1bc3a5ac8c27afdf14afb42c61a19ca", always},
    // HomeDomain, Library/Keyboard/en_GB-dynamic-text.dat
    NameRule{&ScanState::DYNAMICDIT_DATABASE, "0df474a536db7908bb69cc9b430b94a871ae7752", always},
    // HomeDomain, Library/Keyboard/dynamic-text.dat
    NameRule{&ScanState::DYNAMICDIT_DATABASE, "0b68edc697a550c9b977b77cd012fa9a0557dfcb", from<5>},
    // HomeDomain, Library/Maps/History.plist
    NameRule{&ScanState::MAPHISTORY_DATABASE, "b60c382887dfa562166f099f24797e55c12a94e4", always},
    // KeychainDomain, keychain-backup.plist
    NameRule{&ScanState::KEYCHAIN_DATABASE, "51a4616e576dd33cd2abadfea874eb8ff246bf0e", always},
    // HomeDomain, Library/Preferences/com.apple.accountsettings.plist
    NameRule{&ScanState::ACCOUNT_DATABASE, "5fd03a33c2a31106503589573045150c740721dd", always},
    // The list of installed applications
    NameRule{&ScanState::APPLICATIONS_DATABASE, "2436e9cd7b9697b418523c55ac469fea02116cc5", always},
    // AppDomain-net.whatsapp.WhatsApp, Documents/ChatStorage.sqlite
    NameRule{&ScanState::WHATSAPP_DATABASE, kFirstWhatsApp, always},
    // AppDomainGroup-group.net.whatsapp.WhatsApp.shared, ChatStorage.sqlite
    NameRule{&ScanState::WHATSAPP_DATABASE, "7c7fba66680ef796b916b067077cc246adacf01d",
             withoutFirstWhatsApp},
    // HomeDomain, Library/CallHistoryDB/CallHistory.storedata
    NameRule{&ScanState::CALLHISTORY_DATABASE, "5a4935c78a5255723f707230a451d79c540d2741", from<8>},
    // HomeDomain, Library/Safari/History.plist
    NameRule{&ScanState::INTERNET_HISTROY_DATABASE, "1d6740792a2b845f4c1e6220c43906d7f0afe8ab",
             always},
    // AppDomain-com.apple.mobilesafari, Library/Safari/History.plist
    NameRule{&ScanState::INTERNET_HISTROY_DATABASE, "ed50eadf14505ef0b433e0c4a380526ad6656d3a",
             from<7>},
    // AppDomain-com.apple.mobilesafari, Library/Safari/SuspendState.plist. Deliberate: it is the
    // WhatsApp file whose absence decides, whatever the version.
    NameRule{&ScanState::INTERNET_HISTROY_DATABASE, "daa5ae5308250ad766b12e280198bc3a432b671e",
             withoutFirstWhatsApp},
};

// Deliberate: the size counts as a 32-bit number, so that a multiple of 4 GiB is empty.
bool hasContent(const ScanState& state, const char* storedName) {
    const auto file = state.backupFiles().find(storedName);
    if (!file) return false;
    std::error_code failed;
    const auto size = std::filesystem::file_size(*file, failed);
    return !failed && static_cast<std::uint32_t>(size) != 0;
}

}  // namespace

void setupDataBase(ScanState& state) {
    const Facts facts{state.deviceInfo.iOSMajorVersion, hasContent(state, kFirstWhatsApp)};
    for (const NameRule& rule : kRules) {
        if (rule.holds(facts)) state.*rule.field = rule.storedName;
    }
}

}  // namespace salvor
