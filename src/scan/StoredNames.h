#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace salvor {

/// The files of a backup that the program knows by name, in the order of `kStoredFiles`.
enum class Stored : std::uint8_t {
    Messages,
    AddressBook,
    AddressBookImages,
    Calendar,
    NotesBefore9,
    NotesFrom9,
    CallsBefore8,
    CallsFrom8,
    WhatsApp,
    WhatsAppShared,
    SafariPagesBefore7,
    SafariPagesFrom7,
    SafariHistory,
    SafariSuspendState,
    Photos,
    PhotosBefore7,
    WordsBefore5,
    WordsFrom5,
    MapSearches,
    Keychain,
    Accounts,
    Applications,
    Skype,
};

struct StoredFile {
    Stored file;
    const char* name;  ///< in the backup: the SHA-1 of domain, hyphen and path
    const char* domain;
    const char* path;  ///< null where only the name is known, as is the domain
    const char* what;
};

inline constexpr StoredFile kStoredFiles[] = {
    {Stored::Messages, "3d0d7e5fb2ce288813306e4d4636395e047a3d28", "HomeDomain",
     "Library/SMS/sms.db", "messages"},
    {Stored::AddressBook, "31bb7ba8914766d4ba40d6dfb6113c8b614be442", "HomeDomain",
     "Library/AddressBook/AddressBook.sqlitedb", "contacts"},
    {Stored::AddressBookImages, "cd6702cea29fe89cf280a76794405adb17f9a0ee", "HomeDomain",
     "Library/AddressBook/AddressBookImages.sqlitedb", "pictures of contacts"},
    {Stored::Calendar, "2041457d5fe04d39d0ab481178355df6781e6858", "HomeDomain",
     "Library/Calendar/Calendar.sqlitedb", "calendar"},
    {Stored::NotesBefore9, "ca3bc056d4da0bbf88b5fb3be254f3b7147e639c", "HomeDomain",
     "Library/Notes/notes.sqlite", "notes, iOS 4 to 8"},
    {Stored::NotesFrom9, "4f98687d8ab0d6d1a371110e6b7300f6e465bef2",
     "AppDomainGroup-group.com.apple.notes", "NoteStore.sqlite", "notes, iOS 9 and later"},
    {Stored::CallsBefore8, "2b2b0084a1bc3a5ac8c27afdf14afb42c61a19ca", "WirelessDomain",
     "Library/CallHistory/call_history.db", "calls, iOS 4 to 7"},
    {Stored::CallsFrom8, "5a4935c78a5255723f707230a451d79c540d2741", "HomeDomain",
     "Library/CallHistoryDB/CallHistory.storedata", "calls, iOS 8 and later"},
    {Stored::WhatsApp, "1b6b187a1b60b9ae8b720c79e2c67f472bab09c0",
     "AppDomain-net.whatsapp.WhatsApp", "Documents/ChatStorage.sqlite", "WhatsApp, first place"},
    {Stored::WhatsAppShared, "7c7fba66680ef796b916b067077cc246adacf01d",
     "AppDomainGroup-group.net.whatsapp.WhatsApp.shared", "ChatStorage.sqlite",
     "WhatsApp, second place"},
    {Stored::SafariPagesBefore7, "1d6740792a2b845f4c1e6220c43906d7f0afe8ab", "HomeDomain",
     "Library/Safari/History.plist", "visited pages, iOS 4 to 6"},
    {Stored::SafariPagesFrom7, "ed50eadf14505ef0b433e0c4a380526ad6656d3a",
     "AppDomain-com.apple.mobilesafari", "Library/Safari/History.plist", "visited pages, iOS 7"},
    {Stored::SafariHistory, "e74113c185fd8297e140cfcf9c99436c5cc06b57",
     "AppDomain-com.apple.mobilesafari", "Library/Safari/History.db",
     "visited pages, iOS 8 and later"},
    {Stored::SafariSuspendState, "daa5ae5308250ad766b12e280198bc3a432b671e",
     "AppDomain-com.apple.mobilesafari", "Library/Safari/SuspendState.plist", "open pages"},
    {Stored::Photos, "12b144c0bd44f2b3dffd9186d3f9c05b917cee25", "CameraRollDomain",
     "Media/PhotoData/Photos.sqlite", "photo library"},
    {Stored::PhotosBefore7, "bedec6d42efe57123676bfa31e98ab68b713195f", "MediaDomain",
     "Media/PhotoData/Photos.sqlite", "photo library, older place"},
    {Stored::WordsBefore5, "0df474a536db7908bb69cc9b430b94a871ae7752", "HomeDomain",
     "Library/Keyboard/en_GB-dynamic-text.dat", "keyboard words, iOS 4"},
    {Stored::WordsFrom5, "0b68edc697a550c9b977b77cd012fa9a0557dfcb", "HomeDomain",
     "Library/Keyboard/dynamic-text.dat", "keyboard words, iOS 5 and later"},
    {Stored::MapSearches, "b60c382887dfa562166f099f24797e55c12a94e4", "HomeDomain",
     "Library/Maps/History.plist", "map searches"},
    {Stored::Keychain, "51a4616e576dd33cd2abadfea874eb8ff246bf0e", "KeychainDomain",
     "keychain-backup.plist", "keychain"},
    {Stored::Accounts, "5fd03a33c2a31106503589573045150c740721dd", "HomeDomain",
     "Library/Preferences/com.apple.accountsettings.plist", "mail accounts"},
    {Stored::Applications, "2436e9cd7b9697b418523c55ac469fea02116cc5", nullptr, nullptr,
     "installed applications"},
    // Under its own name, where somebody laid it into the backup folder.
    {Stored::Skype, "main.db", nullptr, nullptr, "Skype"},
};

constexpr const char* storedNameOf(Stored file) {
    return kStoredFiles[static_cast<std::size_t>(file)].name;
}

/// Every file has its row, at its place.
consteval bool storedFilesAreInOrder() {
    for (std::size_t i = 0; i < std::size(kStoredFiles); ++i)
        if (kStoredFiles[i].file != static_cast<Stored>(i)) return false;
    return std::size(kStoredFiles) == static_cast<std::size_t>(Stored::Skype) + 1;
}
static_assert(storedFilesAreInOrder());

inline constexpr const char* MessagesSqliteDbName = storedNameOf(Stored::Messages);
inline constexpr const char* NotesIOS641SqliteDbName = storedNameOf(Stored::NotesBefore9);
inline constexpr const char* NotesIOS9SqliteDbName = storedNameOf(Stored::NotesFrom9);
inline constexpr const char* CallHistoryIOS7641SqliteDbName = storedNameOf(Stored::CallsBefore8);
inline constexpr const char* CallHistoryIOS8SqliteDbName = storedNameOf(Stored::CallsFrom8);
inline constexpr const char* ContactsIOS641SqliteDbName = storedNameOf(Stored::AddressBook);
inline constexpr const char* ContactsImagesIOS641SqliteDbName =
    storedNameOf(Stored::AddressBookImages);
inline constexpr const char* CalendarsSqliteDbName = storedNameOf(Stored::Calendar);
inline constexpr const char* WhatsAppSqliteDbName = storedNameOf(Stored::WhatsApp);
inline constexpr const char* WhatsAppSqliteDbName2 = storedNameOf(Stored::WhatsAppShared);
inline constexpr const char* PhotosSqliteDbName = storedNameOf(Stored::Photos);
inline constexpr const char* PhotosSqliteDbNameIOS456 = storedNameOf(Stored::PhotosBefore7);

}  // namespace salvor
