#include "backup/extraction/LiveCategories.h"

#include <array>

#include "backup/extraction/CategoryDatabases.h"
#include "live/DAOs.h"
#include "sql/FMDBUtils.h"

namespace salvor {
namespace {

template <class... Lists>
void clearAll(Lists&... lists) {
    (lists.clear(), ...);
}

/// Appends what `query` of a fresh data-access object returns, when the database opens.
template <class Record>
void readInto(List<Record>& list, List<Record> (DAOs::*query)(), const std::string& storedName,
              ScanState& state, const std::stop_token& cancelled) {
    FMDBUtils database(state.backupFiles().path(storedName).string(), state.sourcePolicy,
                       cancelled);
    if (!database.openDatabase()) return;
    DAOs daos(state, cancelled);
    const auto rows = (daos.*query)();
    list.insert(list.end(), rows.begin(), rows.end());
}

template <class Record>
void count(ScanState::Counter& counter, const List<Record>& list) {
    counter = static_cast<std::int32_t>(list.size());
}

void clearMessages(ScanState& s) {
    clearAll(s.SMSContent, s.AllSMSContent, s.iMessageContent, s.AllChatsContent,
             s.AllChatMessageJoinContent, s.Conversations, s.DeletedSMS, s.AllDeletedSMS,
             s.DeletediMessage);
}
void readMessages(ScanState& s, const std::stop_token& cancelled) {
    readInto(s.SMSContent, &DAOs::GetSMS, s.SMS_DATABASE, s, cancelled);
    count(s.SMSCount, s.SMSContent);
}

void clearContacts(ScanState& s) {
    clearAll(s.ContactContent, s.AllContactContent, s.DeletedContact, s.AllDeletedContact);
}
void readContacts(ScanState& s, const std::stop_token& cancelled) {
    readInto(s.ContactContent, &DAOs::GetContacts, s.ADDRESSBOOK_DATABASE, s, cancelled);
    count(s.ContactCount, s.ContactContent);
}

void clearCalls(ScanState& s) {
    clearAll(s.CallLogContent, s.AllCallLogContent, s.faceTimeContent, s.DeletedCallLog,
             s.AllDeletedCallLog, s.DeletedFaceTime);
}
void readCalls(ScanState& s, const std::stop_token& cancelled) {
    readInto(s.CallLogContent, &DAOs::GetCallLogs, s.CALLHISTORY_DATABASE, s, cancelled);
    count(s.CallLogCount, s.CallLogContent);
}

void clearWhatsApp(ScanState& s) {
    clearAll(s.WhatsAppContent, s.AllWhatsAppContent, s.DeletedWhatsApp, s.AllDeletedWhatsApp);
}
void readWhatsApp(ScanState& s, const std::stop_token& cancelled) {
    readInto(s.WhatsAppContent, &DAOs::GetWhatsAppLog, s.WHATSAPP_DATABASE, s, cancelled);
    count(s.WhatsAppCount, s.WhatsAppContent);
}

void clearNotes(ScanState& s) {
    clearAll(s.NotesContent, s.AllNotesContent, s.DeletedNotes, s.AllDeletedNotes);
}
void readNotes(ScanState& s, const std::stop_token& cancelled) {
    readInto(s.NotesContent, &DAOs::GetNotes91, kNotesStoreIOS9, s, cancelled);
    if (s.backupFiles().find(s.NOTES_DATABASE)) {
        readInto(s.NotesContent, &DAOs::GetNotes, s.NOTES_DATABASE, s, cancelled);
    }
    count(s.NoteCount, s.NotesContent);
}

void clearCalendar(ScanState& s) {
    clearAll(s.CalendarContent, s.AllCalendarContent, s.DeletedCalendar, s.AllDeletedCalendar);
}
void readCalendar(ScanState& s, const std::stop_token& cancelled) {
    readInto(s.CalendarContent, &DAOs::GetCalendar, s.CALENDAR_DATABASE, s, cancelled);
    count(s.CalendarCount, s.CalendarContent);
}

std::size_t messages(const ScanState& s) {
    return s.SMSContent.size();
}
std::size_t calls(const ScanState& s) {
    return s.CallLogContent.size();
}
std::size_t whatsApp(const ScanState& s) {
    return s.WhatsAppContent.size();
}

// Deliberate: contacts, notes and calendar show the number of messages, which a scan of the
// category alone does not even read. The spelling of the texts is deliberate, too.
constexpr std::array kCategories{
    LiveCategory{kMessages, "SMS", "SMS Retreived", clearMessages, readMessages, messages},
    LiveCategory{kContacts, "Contacts", "Contacts Retreived", clearContacts, readContacts,
                 messages},
    LiveCategory{kCallHistory, "Call History", "CallHistory Retreived", clearCalls, readCalls,
                 calls},
    LiveCategory{kWhatsApp, "WhatsApp", "WhatsApp Retreived", clearWhatsApp, readWhatsApp,
                 whatsApp},
    LiveCategory{kNotes, "Notes", "Notes Retreived", clearNotes, readNotes, messages},
    LiveCategory{kCalendar, "Calendar", "Calendar Retreived", clearCalendar, readCalendar,
                 messages},
};

}  // namespace

std::span<const LiveCategory> liveCategories() {
    return kCategories;
}

void clearDeletedLists(ScanState& s) {
    clearAll(s.DeletedSMS, s.DeletedContact, s.DeletedCallLog, s.DeletedCalendar,
             s.DeletedWhatsApp);
}

}  // namespace salvor
