#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "records/Appointment.h"
#include "records/CallHistory.h"
#include "records/ChatRecords.h"
#include "records/ConversationContact.h"
#include "records/DeviceInfo.h"
#include "records/List.h"
#include "records/ListRows.h"
#include "records/Message.h"
#include "records/Note.h"
#include "records/RecordContext.h"
#include "records/SMS.h"
#include "records/WhatsAppMessage.h"
#include "scan/BackupFiles.h"
#include "scan/FileOutcomes.h"
#include "scan/ScanObserver.h"
#include "sql/SourcePolicy.h"

namespace salvor {

class FMDBUtils;
class SqLiteTableSignatures;

/// How far the search for deleted records has come, in bytes of database files. Written by the
/// carvers, read by whoever draws the progress.
struct ScanProgress {
    std::atomic<std::uint64_t> bytesTotal{0};  ///< of the whole scan; set before anything is read
    std::atomic<std::uint64_t> bytesDone{0};
    std::atomic<std::uint64_t> recordsFound{0};  ///< deleted records that reached a list
    std::atomic<std::uint32_t> pictureSteps{0};  ///< eighths of the stored files looked at
};

/// What a scan was asked for and how far it came.
struct ScanRun {
    std::int32_t dataType = 0;          ///< the code of the request
    std::int64_t startedAt = 0;         ///< Unix seconds; 0 before a scan
    std::atomic<bool> complete{false};  ///< it came to its end: no cancel, no exception
};

/// The hub of one scan: source, database names, result lists, counters, flags. Boxes are handed
/// a `ScanState&`, so two scans may run in one process. A list belongs to the worker that fills
/// it until that worker's finished flag is set; counters and flags are atomic.
class ScanState : public RecordContext {
  public:
    ScanState();
    ~ScanState() override;
    ScanState(const ScanState&) = delete;
    ScanState& operator=(const ScanState&) = delete;

    // Source
    std::string BACKUP_DIRECTORY;  ///< shown and reported; its files are those of `backupFiles`
    DeviceInfo deviceInfo;
    std::shared_ptr<DeviceInfo> _deviceInfoBackup;  ///< name and identifier of the last backup
    std::atomic<std::int32_t> RecoverType{0};       ///< 1 backup, 0 device; a removal sets it
    SourcePolicy sourcePolicy = SourcePolicy::Protected;
    /// The files of the source; never null. They change only between two scans.
    const std::shared_ptr<const BackupFiles>& backupFiles() const { return backupFiles_; }
    void setBackupFiles(std::shared_ptr<const BackupFiles> files);
    /// Files of another backup of the device, some of which the lists name.
    void addOtherBackup(std::shared_ptr<const BackupFiles> files);
    void forgetOtherBackups();
    /// A file by the path that a list names: one of a backup, else an ordinary one.
    BackupFile openListed(const std::filesystem::path& path) const;
    /// What is known of such a file, with the date that the backup's index tells where it does.
    FileFacts findListed(const std::filesystem::path& path) const;

    // Stored names of the category databases
    std::string SMS_DATABASE, ADDRESSBOOK_DATABASE, CALENDAR_DATABASE, NOTES_DATABASE,
        CALLHISTORY_DATABASE, MAPHISTORY_DATABASE, DYNAMICDIT_DATABASE, ACCOUNT_DATABASE,
        KEYCHAIN_DATABASE, INTERNET_HISTROY_DATABASE, APPLICATIONS_DATABASE, WHATSAPP_DATABASE,
        CONSOLIDATE_DATABASE;

    // Live lists
    List<SMS> SMSContent, AllSMSContent, iMessageContent;
    List<Contact> ContactContent, AllContactContent;
    List<Note> NotesContent, AllNotesContent;
    List<Calendar> CalendarContent, AllCalendarContent;
    List<CallLog> CallLogContent, AllCallLogContent, faceTimeContent;
    List<InternetHistory> InternetContent, AllInternetContent;
    List<WhatsApp> WhatsAppContent, AllWhatsAppContent;
    List<MapHistory> MapContent;
    List<UserDict> UserDictContent;
    List<Application> ApplicationContent;
    List<Account> AccountContent;
    List<Photo> Photos;
    List<Video> Videos;
    List<Chat> AllChatsContent;
    List<ChatMessageJoin> AllChatMessageJoinContent;

    // Deleted lists
    List<SMS> DeletedSMS, AllDeletedSMS, DeletediMessage;
    List<CallLog> DeletedFaceTime, DeletedCallLog, AllDeletedCallLog;
    List<Contact> DeletedContact, AllDeletedContact;
    List<Note> DeletedNotes, AllDeletedNotes;
    List<Calendar> DeletedCalendar, AllDeletedCalendar;
    List<WhatsApp> DeletedWhatsApp, AllDeletedWhatsApp;
    List<InternetHistory> DeletedInternet, AllDeletedInternet;
    List<Photo> DeletedPhotos;
    List<Video> DeletedVideos;

    /// The conversations of the message view, left by the message service.
    List<ConversationContact> Conversations;

    // Counters
    using Counter = std::atomic<std::int32_t>;
    Counter SMSCount{0}, ContactCount{0}, CallLogCount{0}, CalendarCount{0}, NoteCount{0},
        InternetCount{0}, iMessageCount{0}, FaceTimeCount{0}, WhatsAppCount{0}, PhotosCount{0},
        VideosCount{0};
    Counter DeletedSMSCount{0}, DeletediMessageCount{0}, DeletedFaceTimeCount{0},
        DeletedContactCount{0}, DeletedCallLogCount{0}, DeletedCalendarCount{0},
        DeletedNoteCount{0}, DeletedWhatsAppCount{0}, DeletedPhotosCount{0}, DeletedVideosCount{0},
        DeletedInternetCount{0};
    std::atomic<std::int64_t> unKnownCount{0};  ///< numbers unknown senders

    // Flags
    std::atomic<bool> IsCancelFlag{false}, isDoingRecovery{false}, isDoingCallList{false},
        signatureLoaded{false}, hasDoneScan{false}, photosLocked{false}, dcimLocked{false};

    ScanProgress progress;
    ScanRun run;
    /// What could be read of the databases; told by `readingEnded`.
    FileOutcomes fileOutcomes;
    std::atomic<std::size_t> picturesNotCopied{0};  ///< since the sweep could not write the copy
    std::shared_ptr<SqLiteTableSignatures> recoverySignatures;
    ScanObserver* observer = nullptr;  ///< not owned; outlives the scan
    /// Opens the calendar database for `openCalendarLookups`; set by the box that knows SQL.
    std::shared_ptr<DatabaseLookups> (*calendarLookupsFactory)(ScanState&) = nullptr;

    // The shared database handle and data-access object: swapped as a pair under a lock. An
    // operation takes its handle once and keeps using that one.
    void installDatabase(std::shared_ptr<FMDBUtils> dbUtils, std::shared_ptr<DatabaseLookups> daos);
    std::shared_ptr<FMDBUtils> dbUtils() const;
    std::shared_ptr<DatabaseLookups> daos() const;

    // Operations that reach the observer
    void updateStatus(StatusCode code, const std::string& text);
    void categoryRead(Category category);
    void categoryRecovered(Category category);
    void updateUIfoundRecoveredData();
    void UpdateMainView(View view);
    void refreshTabButtons();
    void selectTab(std::int32_t dataType);
    void enableTab(Category category);
    void showScreen(Screen screen);
    /// Looks at the files of the categories of `dataType` and tells what is wrong with them.
    void beginFiles(std::int32_t dataType);
    /// How the reading of the file with this stored name ended; its first fault is told.
    void readingEnded(std::string_view storedName, const ReadingEnd& end);
    /// A category is not whole for a reason that is not a single file's. Tells it.
    void categoryFailed(Category category, const std::string& reason);
    /// The scan is over, whole or not: `hasDoneScan`, then the observer. Kept:
    /// cut-scan-is-finished.
    void endScan(ScanEnd end, const std::string& reason);
    void warn(const std::string& text);
    void tellError(const std::string& text);
    /// A text of several lines for whoever looks for a fault of the program.
    void report(const std::string& lines);

    /// Every status that `updateStatus` was given since the scan began, in order.
    std::vector<std::pair<StatusCode, std::string>> statusHistory() const;
    void forgetStatuses();

    // RecordContext
    std::shared_ptr<DatabaseLookups> lookups() const override { return daos(); }
    std::shared_ptr<DatabaseLookups> openCalendarLookups() override;
    std::int64_t nextUnknownNumber() override { return ++unKnownCount; }
    const List<Contact>& liveContacts() const override { return ContactContent; }
    const List<Contact>& deletedContacts() const override { return DeletedContact; }
    std::size_t deletedCallLogCount() const override { return DeletedCallLog.size(); }

  private:
    /// The backup whose list names this path, and the stored name there; null for an ordinary
    /// file.
    std::pair<std::shared_ptr<const BackupFiles>, std::string> listedIn(
        const std::filesystem::path& path) const;

    mutable std::mutex databaseMutex_;
    std::shared_ptr<FMDBUtils> dbUtils_;
    std::shared_ptr<DatabaseLookups> daos_;
    std::shared_ptr<const BackupFiles> backupFiles_ = BackupFiles::none();
    mutable std::mutex otherBackupsMutex_;
    std::vector<std::shared_ptr<const BackupFiles>> otherBackups_;
    mutable std::mutex statusMutex_;
    std::vector<std::pair<StatusCode, std::string>> statusHistory_;
};

}  // namespace salvor
