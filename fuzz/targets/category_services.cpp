// A category's whole way, with the input as its only database: live rows, carving, merge, grouping
// and the report. Byte 73, which SQLite keeps for later, chooses file and category.
#include <array>
#include <nlohmann/json.hpp>

#include "backup/BackupSource.h"
#include "backup/extraction/CategoryDatabases.h"
#include "backup/extraction/LiveCategories.h"
#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "report/ScanReport.h"
#include "scan/ScanState.h"
#include "scan/StoredNames.h"
#include "services/DcimService.h"
#include "services/ServiceMakers.h"

using namespace salvor;

namespace {

/// A file of the backup, the service that reads it and the version of the device.
struct Case {
    ServiceIndex service;
    const char* storedName;
    std::int32_t ios;
};

constexpr std::array kCases = {
    Case{ServiceIndex::Messages, MessagesSqliteDbName, 7},
    Case{ServiceIndex::Messages, MessagesSqliteDbName, 4},
    Case{ServiceIndex::Contacts, ContactsIOS641SqliteDbName, 7},
    Case{ServiceIndex::CallHistory, CallHistoryIOS7641SqliteDbName, 7},
    Case{ServiceIndex::CallHistory, CallHistoryIOS8SqliteDbName, 8},
    Case{ServiceIndex::Calendars, CalendarsSqliteDbName, 7},
    Case{ServiceIndex::Notes, NotesIOS641SqliteDbName, 7},
    Case{ServiceIndex::Notes, NotesIOS9SqliteDbName, 9},
    Case{ServiceIndex::WhatsApp, WhatsAppSqliteDbName, 7},
    Case{ServiceIndex::CameraRoll, PhotosSqliteDbName, 7},
    Case{ServiceIndex::InternetHistory, storedNameOf(Stored::SafariHistory), 8},
};

}  // namespace

SALVOR_FUZZ_TARGET(category_services) {
    constexpr std::size_t kChoice = 73;
    if (input.size() <= kChoice) return;
    const Case& chosen = kCases.at(input[kChoice] % kCases.size());
    const fuzz::InputFile file(input, chosen.storedName);
    ScanState state;
    state.RecoverType = 1;
    state.recoverySignatures = fuzz::shippedSignatures();
    useBackup(state, file.path().parent_path());
    state.deviceInfo.iOSMajorVersion = chosen.ios;
    state.deviceInfo.BackupLocation = state.BACKUP_DIRECTORY;
    setupDataBase(state);
    for (const auto& category : categories()) readLiveRows(category, state, {});
    const auto service = builtServices().at(chosen.service)(state, state.deviceInfo);
    service->RecoverFromIOSBackup(state.deviceInfo);
    fuzz::expect(nlohmann::json::accept(ScanReport::text(state)), "the report is JSON");
}
