#include "live/DAOs.h"
#include "live/RowDates.h"
#include "live/RowReading.h"
#include "records/ContactNames.h"
#include "sql/SqlFormat.h"

namespace salvor {
namespace {

constexpr auto kOlderCalls = "SELECT * FROM call where face_time_data IS NULL";
// Before face_time_data came, every call was a telephone call.
constexpr auto kOldestCalls = "SELECT ROWID, address, date, duration, flags FROM call";
constexpr auto kCalls =
    "SELECT Z_PK, ZADDRESS as address, datetime(ZDATE + 978307200, 'unixepoch','localtime') AS "
    "date, ZDURATION as duration, ZCALLTYPE as flags, ZISO_COUNTRY_CODE, ZORIGINATED FROM "
    "ZCALLRECORD order by ZDATE desc, Z_PK";
constexpr auto kFaceTimeCalls = "SELECT * FROM call where face_time_data IS NOT NULL";
constexpr auto kCallGroups = "SELECT address,date FROM call GROUP BY address ORDER BY date desc";
constexpr auto kCallRowIds = "SELECT ROWID,address FROM call";
constexpr auto kCallDate = "SELECT date FROM call where ROWID = ?";
constexpr auto kCallRecord = "SELECT * FROM ZCALLRECORD WHERE Z_PK = %d";

constexpr auto kIncoming = "Incoming Call";
constexpr auto kOutgoing = "Outgoing Call";
constexpr auto kCancelled = "Outgoing Cancelled";

constexpr std::int32_t kFirstVersionWithRecords = 8;

/// `GetCallType` told further apart by the duration; the newer store says the direction itself.
std::string callTypeText(const ResultSet& row, bool newer) {
    std::string type = newer ? row.boolForColumn("ZORIGINATED") ? kOutgoing : kIncoming
                             : DAOs::GetCallType(row.intForColumn("flags"));
    if (type != kCancelled)  // Kept: cancelled-stands-alone.
        type += row.doubleForColumn("duration") > 0 ? " -Answered" : " -Not answered";
    return type;
}

void fillCall(const ResultSet& row, CallLog& call, bool newer) {
    call.Address = row.stringForColumn("address");
    call.PhoneNumber = call.Address;
    call.OriginalAddress = row.stringForColumn("originalAddress");
    call.LocalTime =
        newer ? row.stringForColumn("date") : textOfUnixSeconds(row.longLongIntForColumn("date"));
    call.CallType = callTypeText(row, newer);
    call.CallDuration = row.intForColumn("duration");
}

/// Names from the contacts that the scan has read so far.
void nameCalls(const List<CallLog>& calls, const ScanState& state) {
    ContactNames names(state);
    for (const auto& call : calls) call->ContactName = names.find(call->Address);
}

}  // namespace

List<CallLog> DAOs::readCalls(std::initializer_list<const char*> statements, const char* mode,
                              bool newer) {
    auto list =
        readRows<CallLog>(openCategory(state_.CALLHISTORY_DATABASE)->executeList(statements),
                          [newer, mode](const ResultSet& row, CallLog& call) {
                              fillCall(row, call, newer);
                              call.CallMode = mode;
                          });
    numberRows(list);
    nameCalls(list, state_);
    return list;
}

List<CallLog> DAOs::GetCallLogs() {
    const bool newer = state_.deviceInfo.iOSMajorVersion >= kFirstVersionWithRecords;
    auto list = newer ? readCalls({kCalls}, "Call", true)
                      : readCalls({kOlderCalls, kOldestCalls}, "Call", false);
    append(state_.AllCallLogContent, list);
    state_.CallLogCount = static_cast<std::int32_t>(list.size());
    return list;
}

List<CallLog> DAOs::GetFaceTimeLogs() {
    auto list = readCalls({kFaceTimeCalls}, "FaceTime", false);
    append(state_.faceTimeContent, list);
    state_.FaceTimeCount = static_cast<std::int32_t>(list.size());
    return list;
}

List<CallLog> DAOs::GetCallLogGroup() {
    auto list = readRows<CallLog>(open(state_.CALLHISTORY_DATABASE)->executeQuery(kCallGroups),
                                  [](const ResultSet& row, CallLog& call) {
                                      call.Address = row.stringForColumn("address");
                                      call.PhoneNumber = call.Address;
                                      call.LocalTime =
                                          textOfUnixSeconds(row.longLongIntForColumn("date"));
                                  });
    numberRows(list);
    return list;
}

std::string DAOs::GetCallType(std::int32_t flags) {
    switch (flags) {
        case 4:
        case 8:
        case 0x170004:
            return kIncoming;
        case 5:
            return kOutgoing;
        default:
            return kCancelled;
    }
}

std::map<std::int64_t, Text> DAOs::GetAllCallHistroyRowID() {
    return textsByRowId(state_.CALLHISTORY_DATABASE, kCallRowIds, "address");
}

std::string DAOs::dateForRowID(std::int64_t rowId) {
    auto rows = open(state_.CALLHISTORY_DATABASE)->executeQuery(kCallDate, {rowId});
    return rows.next() ? shortTextOfUnixSeconds(rows.longLongIntForColumn("date")) : "";
}

bool DAOs::isDeletedZCALLRECORD(std::int64_t primaryKey) {
    return hasRow(state_.CALLHISTORY_DATABASE, formatSql(kCallRecord, {primaryKey}));
}

}  // namespace salvor
