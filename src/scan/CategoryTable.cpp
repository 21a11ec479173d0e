#include <algorithm>
#include <array>

#include "scan/Categories.h"

namespace salvor {
namespace {

using S = ScanState;
using Zeroed = RowKind::Zeroed;

// A list, counter or database by the name of its field.
#define SALVOR_FIELD(name) \
    { #name, &S::name }
#define SALVOR_DATABASE(name, place) \
    { #name, &S::name, place }

constexpr RowKind kMessages[] = {
    {.live = SALVOR_FIELD(SMSContent),
     .deleted = SALVOR_FIELD(DeletedSMS),
     .liveCount = SALVOR_FIELD(SMSCount),
     .deletedCount = SALVOR_FIELD(DeletedSMSCount),
     .emptiedForRecovery = true,
     .exported = 1,
     .file = "SMS"},
    // Stand among the messages, too.
    {.live = SALVOR_FIELD(iMessageContent),
     .deleted = SALVOR_FIELD(DeletediMessage),
     .liveCount = SALVOR_FIELD(iMessageCount),
     .deletedCount = SALVOR_FIELD(DeletediMessageCount),
     .listed = false},
};
// The sweep numbers its copies by the live counters; the library's service sets the others.
constexpr RowKind kPictures[] = {
    {.live = SALVOR_FIELD(Photos),
     .deleted = SALVOR_FIELD(DeletedPhotos),
     .liveCount = SALVOR_FIELD(PhotosCount),
     .deletedCount = SALVOR_FIELD(DeletedPhotosCount),
     .zeroed = Zeroed::LiveCount,
     .exported = 8,
     .file = "Photos"},
    {.live = SALVOR_FIELD(Videos),
     .deleted = SALVOR_FIELD(DeletedVideos),
     .liveCount = SALVOR_FIELD(VideosCount),
     .deletedCount = SALVOR_FIELD(DeletedVideosCount),
     .zeroed = Zeroed::LiveCount,
     .exported = 9,
     .file = "Videos"},
};
constexpr RowKind kContacts[] = {
    {.live = SALVOR_FIELD(ContactContent),
     .deleted = SALVOR_FIELD(DeletedContact),
     .liveCount = SALVOR_FIELD(ContactCount),
     .deletedCount = SALVOR_FIELD(DeletedContactCount),
     .emptiedForRecovery = true,
     .exported = 2,
     .file = "Addressbook"},
};
constexpr RowKind kCalls[] = {
    {.live = SALVOR_FIELD(CallLogContent),
     .deleted = SALVOR_FIELD(DeletedCallLog),
     .liveCount = SALVOR_FIELD(CallLogCount),
     .deletedCount = SALVOR_FIELD(DeletedCallLogCount),
     .emptiedForRecovery = true,
     .exported = 3,
     .file = "Call history"},
    // Stand among the calls, too.
    {.live = SALVOR_FIELD(faceTimeContent),
     .deleted = SALVOR_FIELD(DeletedFaceTime),
     .liveCount = SALVOR_FIELD(FaceTimeCount),
     .deletedCount = SALVOR_FIELD(DeletedFaceTimeCount),
     .listed = false},
};
constexpr RowKind kWhatsApp[] = {
    {.live = SALVOR_FIELD(WhatsAppContent),
     .deleted = SALVOR_FIELD(DeletedWhatsApp),
     .liveCount = SALVOR_FIELD(WhatsAppCount),
     .deletedCount = SALVOR_FIELD(DeletedWhatsAppCount),
     .emptiedForRecovery = true,
     .exported = 13,
     .file = "WhatsApp",
     .tickedExported = false},  // Kept: no-ticked-whatsapp.
};
// Without `emptiedForRecovery`. Kept: five-emptied-lists.
constexpr RowKind kNotes[] = {
    {.live = SALVOR_FIELD(NotesContent),
     .deleted = SALVOR_FIELD(DeletedNotes),
     .liveCount = SALVOR_FIELD(NoteCount),
     .deletedCount = SALVOR_FIELD(DeletedNoteCount),
     .exported = 4,
     .file = "Notes"},
};
constexpr RowKind kInternet[] = {
    {.live = SALVOR_FIELD(InternetContent),
     .deleted = SALVOR_FIELD(DeletedInternet),
     .liveCount = SALVOR_FIELD(InternetCount),
     .deletedCount = SALVOR_FIELD(DeletedInternetCount),
     .zeroed = Zeroed::None,
     .exported = 11,
     .file = "Internet history",
     .deletedExported = false},  // Kept: live-visits-only.
};
constexpr RowKind kCalendar[] = {
    {.live = SALVOR_FIELD(CalendarContent),
     .deleted = SALVOR_FIELD(DeletedCalendar),
     .liveCount = SALVOR_FIELD(CalendarCount),
     .deletedCount = SALVOR_FIELD(DeletedCalendarCount),
     .emptiedForRecovery = true,
     .exported = 5,
     .file = "Calendar"},
};

constexpr Stored kMessageFiles[] = {Stored::Messages};
constexpr Stored kPictureFiles[] = {Stored::Photos, Stored::PhotosBefore7};
constexpr Stored kContactFiles[] = {Stored::AddressBook};
constexpr Stored kCallFiles[] = {Stored::CallsBefore8, Stored::CallsFrom8};
constexpr Stored kWhatsAppFiles[] = {Stored::WhatsApp, Stored::WhatsAppShared};
constexpr Stored kNoteFiles[] = {Stored::NotesFrom9, Stored::NotesBefore9};
constexpr Stored kInternetFiles[] = {Stored::SafariHistory, Stored::SafariPagesFrom7,
                                     Stored::SafariPagesBefore7};
constexpr Stored kCalendarFiles[] = {Stored::Calendar};

template <auto... Fields>
void clear(ScanState& state) {
    ((state.*Fields).clear(), ...);
}

// Contacts, notes and calendar show the number of messages. Kept: message-count-for-most.
//
// Calls are named, and conversations put together, from the contacts. Kept: moments-of-flags.
constexpr std::array kTable{
    CategoryFacts{
        .category = Category::Messages,
        .service = ServiceIndex::Messages,
        .word = "messages",
        .title = "Messages",
        .reading = {"SMS", "SMS Retreived"},
        .worker = {.name = "messagesStart",
                   .preset = FlagPreset::BeforeCreation,
                   .waitsFor = Category::Contacts},
        .places = {.reading = 1,
                   .worker = 7,
                   .wait = 6,
                   .making = 5,
                   .module = 1,
                   .liveKey = 1,
                   .deletedKey = 1},
        .database = SALVOR_DATABASE(SMS_DATABASE, 1),
        .files = kMessageFiles,
        .kinds = kMessages,
        .clearFurther = clear<&S::AllSMSContent, &S::AllDeletedSMS, &S::AllChatsContent,
                              &S::AllChatMessageJoinContent, &S::Conversations>,
    },
    CategoryFacts{
        .category = Category::Photos,
        .service = ServiceIndex::CameraRoll,
        .word = "photos",
        .title = "Photos and videos",
        .reading = {"Photos & Videos... "},
        .worker = {.name = "dcmiStart",
                   .status = "Recovering Photos & Videos...",
                   .redrawsView = true},
        .places = {.worker = 1, .wait = 7, .making = 7, .liveKey = 8, .deletedKey = 7},
        .database = {},  // found by the camera roll's own service
        .files = kPictureFiles,
        .kinds = kPictures,
    },
    CategoryFacts{
        .category = Category::Contacts,
        .service = ServiceIndex::Contacts,
        .word = "contacts",
        .title = "Contacts",
        .reading = {"Contacts", "Contacts Retreived"},
        .worker = {.name = "contactsStart"},
        .places = {.reading = 2,
                   .worker = 2,
                   .wait = 4,
                   .making = 6,
                   .module = 2,
                   .liveKey = 2,
                   .deletedKey = 2},
        .database = SALVOR_DATABASE(ADDRESSBOOK_DATABASE, 2),
        .files = kContactFiles,
        .kinds = kContacts,
        .clearFurther = clear<&S::AllContactContent, &S::AllDeletedContact>,
    },
    CategoryFacts{
        .category = Category::Calls,
        .service = ServiceIndex::CallHistory,
        .word = "calls",
        .title = "Calls",
        .reading = {"Call History", "CallHistory Retreived", Category::Calls},
        .worker = {.name = "callHistoryStart",
                   .waitsFor = Category::Contacts,
                   .clearsFlagAfterWait = true},
        .places = {.reading = 3,
                   .worker = 4,
                   .wait = 2,
                   .making = 2,
                   .module = 5,
                   .liveKey = 3,
                   .deletedKey = 3},
        .database = SALVOR_DATABASE(CALLHISTORY_DATABASE, 5),
        .files = kCallFiles,
        .kinds = kCalls,
        .clearFurther = clear<&S::AllCallLogContent, &S::AllDeletedCallLog>,
    },
    CategoryFacts{
        .category = Category::WhatsApp,
        .service = ServiceIndex::WhatsApp,
        .word = "whatsapp",
        .title = "WhatsApp",
        .reading = {"WhatsApp", "WhatsApp Retreived", Category::WhatsApp},
        .worker = {.name = "whatsAppStart"},
        .places = {.reading = 4,
                   .worker = 5,
                   .wait = 1,
                   .making = 1,
                   .module = 6,
                   .liveKey = 4,
                   .deletedKey = 4},
        .database = SALVOR_DATABASE(WHATSAPP_DATABASE, 12),
        .files = kWhatsAppFiles,
        .readsOneFile = true,
        .kinds = kWhatsApp,
        .clearFurther = clear<&S::AllWhatsAppContent, &S::AllDeletedWhatsApp>,
    },
    CategoryFacts{
        .category = Category::Notes,
        .service = ServiceIndex::Notes,
        .word = "notes",
        .title = "Notes",
        .reading = {"Notes", "Notes Retreived"},
        .worker = {.name = "notesStart",
                   .preset = FlagPreset::BeforeStart,
                   .presetTwice = Category::Calls},
        .places = {.reading = 5,
                   .worker = 3,
                   .wait = 3,
                   .making = 4,
                   .module = 3,
                   .liveKey = 5,
                   .deletedKey = 5},
        .database = SALVOR_DATABASE(NOTES_DATABASE, 4),
        .files = kNoteFiles,
        .kinds = kNotes,
        .clearFurther = clear<&S::AllNotesContent, &S::AllDeletedNotes>,
    },
    CategoryFacts{
        .category = Category::Internet,
        .service = ServiceIndex::InternetHistory,
        .word = "internet",
        .title = "Internet history",
        .reading = {},
        .worker = {.name = "internetHistoryStart",
                   .status = "Recovering Internet History",
                   .redrawsView = true,
                   .refreshesTabs = true},
        .places = {.worker = 8, .wait = 8, .making = 8, .liveKey = 7, .deletedKey = 8},
        .database = SALVOR_DATABASE(INTERNET_HISTROY_DATABASE, 10),
        .files = kInternetFiles,
        .kinds = kInternet,
        .clearFurther = clear<&S::AllInternetContent, &S::AllDeletedInternet>,
    },
    CategoryFacts{
        .category = Category::Calendar,
        .service = ServiceIndex::Calendars,
        .word = "calendar",
        .title = "Calendar",
        .reading = {"Calendar", "Calendar Retreived"},
        .worker = {.name = "calendarStart"},
        .places = {.reading = 6,
                   .worker = 6,
                   .wait = 5,
                   .making = 3,
                   .module = 4,
                   .liveKey = 6,
                   .deletedKey = 6},
        .database = SALVOR_DATABASE(CALENDAR_DATABASE, 3),
        .files = kCalendarFiles,
        .kinds = kCalendar,
        .clearFurther = clear<&S::AllCalendarContent, &S::AllDeletedCalendar>,
    },
};

/// Of lists that nothing deleted is looked for in. Nothing reads the keychain or the last one.
constexpr std::array kOtherDatabases{
    NamedDatabase SALVOR_DATABASE(MAPHISTORY_DATABASE, 6),
    NamedDatabase SALVOR_DATABASE(DYNAMICDIT_DATABASE, 7),
    NamedDatabase SALVOR_DATABASE(ACCOUNT_DATABASE, 8),
    NamedDatabase SALVOR_DATABASE(KEYCHAIN_DATABASE, 9),
    NamedDatabase SALVOR_DATABASE(APPLICATIONS_DATABASE, 11),
    NamedDatabase SALVOR_DATABASE(CONSOLIDATE_DATABASE, 13),
};

#undef SALVOR_FIELD
#undef SALVOR_DATABASE

constexpr bool standsByCode() {
    for (std::size_t i = 0; i < kTable.size(); ++i) {
        if (indexOf(kTable.at(i).category) != i) return false;
    }
    return kTable.size() == kCategoryCount;
}
static_assert(standsByCode(), "the table has a row for each category, in the order of the codes");

/// Whether the places are 1, 2, 3 and so on without gap or repetition.
constexpr bool isOrder(int Places::*place, bool ofAll) {
    std::array<bool, kTable.size() + 1> taken{};
    std::size_t count = 0;
    for (const CategoryFacts& facts : kTable) {
        const int own = facts.places.*place;
        if (own == 0 && !ofAll) continue;
        if (own < 1 || taken.at(static_cast<std::size_t>(own))) return false;
        taken.at(static_cast<std::size_t>(own)) = true;
        ++count;
    }
    for (std::size_t i = 1; i <= count; ++i) {
        if (!taken.at(i)) return false;
    }
    return true;
}
static_assert(isOrder(&Places::reading, false) && isOrder(&Places::module, false));
static_assert(isOrder(&Places::worker, true) && isOrder(&Places::wait, true) &&
              isOrder(&Places::making, true));
static_assert(isOrder(&Places::liveKey, true) && isOrder(&Places::deletedKey, true));

}  // namespace

std::span<const CategoryFacts> categories() {
    return kTable;
}

std::vector<NamedDatabase> databaseNames() {
    std::vector<NamedDatabase> names(kOtherDatabases.begin(), kOtherDatabases.end());
    for (const CategoryFacts& facts : kTable) {
        if (facts.database.name != nullptr) names.push_back(facts.database);
    }
    std::sort(names.begin(), names.end(),
              [](const auto& left, const auto& right) { return left.place < right.place; });
    return names;
}

}  // namespace salvor
