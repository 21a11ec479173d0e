#include "backup/extraction/CategoryDatabases.h"

#include <array>

#include "scan/StoredNames.h"

namespace salvor {
namespace {

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
    Stored file;
    bool (*holds)(const Facts&);
};

// In order; a later rule that holds replaces an earlier one of its field.
constexpr std::array kRules{
    NameRule{&ScanState::SMS_DATABASE, Stored::Messages, always},
    NameRule{&ScanState::ADDRESSBOOK_DATABASE, Stored::AddressBook, always},
    NameRule{&ScanState::CALENDAR_DATABASE, Stored::Calendar, always},
    NameRule{&ScanState::NOTES_DATABASE, Stored::NotesBefore9, always},
    NameRule{&ScanState::CALLHISTORY_DATABASE, Stored::CallsBefore8, always},
    NameRule{&ScanState::DYNAMICDIT_DATABASE, Stored::WordsBefore5, always},
    NameRule{&ScanState::DYNAMICDIT_DATABASE, Stored::WordsFrom5, from<5>},
    NameRule{&ScanState::MAPHISTORY_DATABASE, Stored::MapSearches, always},
    NameRule{&ScanState::KEYCHAIN_DATABASE, Stored::Keychain, always},
    NameRule{&ScanState::ACCOUNT_DATABASE, Stored::Accounts, always},
    NameRule{&ScanState::APPLICATIONS_DATABASE, Stored::Applications, always},
    NameRule{&ScanState::WHATSAPP_DATABASE, Stored::WhatsApp, always},
    NameRule{&ScanState::WHATSAPP_DATABASE, Stored::WhatsAppShared, withoutFirstWhatsApp},
    NameRule{&ScanState::CALLHISTORY_DATABASE, Stored::CallsFrom8, from<8>},
    NameRule{&ScanState::INTERNET_HISTROY_DATABASE, Stored::SafariPagesBefore7, always},
    NameRule{&ScanState::INTERNET_HISTROY_DATABASE, Stored::SafariPagesFrom7, from<7>},
    // Kept: whatsapp-decides-history.
    NameRule{&ScanState::INTERNET_HISTROY_DATABASE, Stored::SafariSuspendState,
             withoutFirstWhatsApp},
};

// Kept: four-gib-is-empty.
bool hasContent(const ScanState& state, Stored wanted) {
    const auto file = state.backupFiles()->find(storedNameOf(wanted));
    return file && static_cast<std::uint32_t>(file.size) != 0;
}

}  // namespace

void setupDataBase(ScanState& state) {
    const Facts facts{state.deviceInfo.iOSMajorVersion, hasContent(state, Stored::WhatsApp)};
    for (const NameRule& rule : kRules) {
        if (rule.holds(facts)) state.*rule.field = storedNameOf(rule.file);
    }
}

}  // namespace salvor
