#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "live/BaseDAO.h"
#include "live/ContactValue.h"
#include "records/RecordContext.h"
#include "scan/ScanState.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// The data-access object: one operation per query, the single home of the statements that read
/// live rows. Every operation opens its category's database in the backup afresh, under the scan's
/// source policy; a file that does not open, or a statement that does not prepare, gives no rows.
/// The readers of a category's rows also append to the scan's list of all live rows, store the
/// count, and make their connection and a fresh data-access object the scan's current ones.
/// Look-ups may be called from any thread, the readers from one thread per category.
class DAOs : public BaseDAO, public DatabaseLookups {
  public:
    /// What WhatsApp calls its partners, by their identifiers.
    using PartnerNames = std::unordered_map<Text, Text>;

    explicit DAOs(ScanState& state, std::stop_token cancelled = {});
    ~DAOs() override;

    /// Lets records of `state` open the calendar database for their look-ups.
    static void serveCalendarLookups(ScanState& state);

    // Messages
    List<SMS> GetSMS();
    List<SMS> GetiMessage();
    List<ChatMessageJoin> GetChatMessageJoin();
    List<Chat> GetAllChats();
    List<Chat> GetChatsOf(const Text& chatIdentifier);
    std::map<std::int64_t, Text> GetAllMessageRowID();
    std::map<std::string, std::int64_t> GetAllMessageGUID();
    Text GetPhoneNumberForHID(std::int32_t handleId, const Text& fallback) override;
    Text GetPhoneNumberForID(std::int32_t handleId, const Text& fallback) override;
    static std::string GetMessageType(std::int32_t error, std::int32_t fromMe);

    // Notes
    List<Note> GetNotes();
    /// The store of iOS 9 and later.
    List<Note> GetNotes91();
    List<Note> GetDeletedNotes();
    std::vector<std::int64_t> GetAllNotesRowID();
    /// Whether a live note's title contains `title`.
    bool isDuplicateNote(const Text& title);

    // Calendar
    List<Calendar> GetCalendar();
    List<Calendar> GetCalendarForIOSFive();
    std::vector<std::int64_t> GetAllCalenderRowID();
    Text getLocationFromLocationID(std::int64_t locationId) override;

    // Calls
    List<CallLog> GetCallLogs();
    List<CallLog> GetFaceTimeLogs();
    List<CallLog> GetCallLogGroup();
    static std::string GetCallType(std::int32_t flags);
    std::map<std::int64_t, Text> GetAllCallHistroyRowID();
    /// "" without such a row.
    std::string dateForRowID(std::int64_t rowId);
    /// Whether the row still exists, despite the name.
    bool isDeletedZCALLRECORD(std::int64_t primaryKey);

    // Contacts
    List<Contact> GetContacts();
    /// All values of one person; telephone numbers without special characters.
    std::vector<ContactValue> GetContactProperty(std::int64_t recordId);
    /// The telephone numbers of one person, without special characters.
    std::vector<ContactValue> GetContactPhoneNum(std::int64_t recordId);
    std::map<std::int64_t, Text> GetAllContactRowID();
    bool isDeletedContacted(std::int64_t rowId);
    /// First name of a person with a value that ends with `number`; absent without one.
    Text GetNameForAddress(const Text& number);
    /// `text` without "(", ")", "-" and blanks; "+" and no-break blanks stay.
    static std::string removeSpecialCharsFromString(std::string_view text);

    // WhatsApp
    List<WhatsApp> GetWhatsAppLog();
    List<WhatsApp> GetWhatsApp(const Text& contactJid);
    Text GetWhatsAppContactName(const Text& jid) override;
    std::vector<std::int64_t> GetAllWhatsAppRowID();

    // Skype, from "main.db" in the backup folder
    List<Skype> getSkypeContacts();
    List<Skype> getDialogsPartner(const Text& skypeName);

  private:
    /// For look-ups, of which the scan's `fileOutcomes` learn nothing.
    std::shared_ptr<FMDBUtils> open(const std::string& storedName) const;
    /// For a category's rows; the connection becomes the scan's current one.
    std::shared_ptr<FMDBUtils> openCategory(const std::string& storedName);
    Text handleText(const char* statement, std::int32_t handleId, const Text& fallback);
    bool hasRow(const std::string& storedName, const std::string& statement,
                std::initializer_list<ColumnValue> parameters = {}) const;
    std::vector<std::int64_t> rowIds(const std::string& storedName, const char* statement) const;
    std::map<std::int64_t, Text> textsByRowId(const std::string& storedName, const char* statement,
                                              const char* textColumn) const;
    List<SMS> readMessages(const char* olderStatement, const char* statement);
    List<Note> readNotes(FMDBUtils& database, const char* statement, const char* bodyColumn) const;
    List<Calendar> readEvents(const char* statement);
    List<CallLog> readCalls(std::initializer_list<const char*> statements, const char* mode,
                            bool newer);

    ScanState& state_;
    std::stop_token cancelled_;
    std::mutex lookupMutex_;
    /// The message database, kept open for handle look-ups from the first one on.
    std::shared_ptr<FMDBUtils> numberUTILS_;
    /// What `handleText` found: a row's text (perhaps absent), or no row. Thousands of carved
    /// messages share a few handles.
    std::map<std::pair<std::string_view, std::int32_t>, std::optional<Text>> handleTexts_;
    std::shared_ptr<FMDBUtils> locations_;  ///< kept open for the places of events
    std::optional<PartnerNames> partnerNames_;
};

}  // namespace salvor
