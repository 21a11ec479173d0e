#include "services/CallHistoryService.h"

#include "live/RowReading.h"
#include "recovery/CallCarver.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

constexpr auto kOlderCalls =
    "SELECT ROWID, address, datetime([date], 'unixepoch','localtime') AS CallDate, duration, "
    "flags, id, country_code, network_code FROM call order by [date] desc, ROWID, id";
constexpr auto kNewerCalls =
    "SELECT Z_PK, ZADDRESS, datetime(ZDATE + 978307200, 'unixepoch','localtime') AS CallDate, "
    "ZDURATION, ZCALLTYPE, ZISO_COUNTRY_CODE, ZORIGINATED FROM ZCALLRECORD order by ZDATE desc, "
    "Z_PK";

void fillOlder(const ResultSet& row, CallHistory& call) {
    call.RowId = row.longLongIntForColumn("ROWID");
    call.Address = row.stringForColumn("address");
    call.Date = row.stringForColumn("CallDate");
    call.Duration = row.longLongIntForColumn("duration");
    call.Flags = row.intForColumn("flags");
    call.ContactRowId = row.longLongIntForColumn("id");
    call.MobileCountryCode = row.stringForColumn("country_code");
    call.MobileNetworkCode = row.stringForColumn("network_code");
}

void fillNewer(const ResultSet& row, CallHistory& call) {
    call.RowId = row.longLongIntForColumn("Z_PK");
    call.Address = row.stringForColumn("ZADDRESS");
    call.Date = row.stringForColumn("CallDate");
    call.Flags = row.intForColumn("ZCALLTYPE");
    call.MobileCountryCode = row.stringForColumn("ZISO_COUNTRY_CODE");
    call.ZOriginated = row.boolForColumn("ZORIGINATED");
    call.Duration = row.longLongIntForColumn("ZDURATION");
}

}  // namespace

CallHistoryService::CallHistoryService(ScanState& state)
    : abstractServices(state, CallHistoryIOS7641SqliteDbName) {}

void CallHistoryService::RecoverFromIOSBackup(const DeviceInfo& device) {
    doRecovery(device);
}

void CallHistoryService::doRecovery(const DeviceInfo& device) {
    state_.isDoingCallList = true;
    SqliteDbName_ = CallHistoryIOS7641SqliteDbName;
    doRecovery5_6_7(device);
    SqliteDbName_ = CallHistoryIOS8SqliteDbName;
    doRecovery8(device);
    state_.isDoingCallList = false;
}

void CallHistoryService::doRecovery5_6_7(const DeviceInfo& device) {
    const auto file = ConnectionFileFullPath(device);
    callHistoryIOS567ConnectionString_ = file.path.string();
    CallHistorySQLiteRecovery carver(state_, cancelled_);
    carver.setWorkingOnCallList(true);
    carver.DoRecoveryPath(callHistoryIOS567ConnectionString_);
    // The carver's run leaves this list empty; whoever fills it gets contacts attached here.
    for (const auto& record : carver.RecoveredFiltered) {
        auto call = std::dynamic_pointer_cast<CallHistory>(record);
        if (call == nullptr) continue;
        call->contact = contactOf(*call, false);
        model_.push_back(std::move(call));
        ++recovered_;
    }
}

void CallHistoryService::doRecovery8(const DeviceInfo& device) {
    const auto file = ConnectionFileFullPath(device);
    callHistoryIOS8ConnectionString_ = file.path.string();
    CallHistoryIos8Recovery carver(state_, cancelled_);
    carver.setWorkingOnCallList(true);
    carver.DoRecoveryPath(callHistoryIOS8ConnectionString_);
}

std::shared_ptr<Contact> CallHistoryService::contactOf(const CallHistory& call,
                                                       bool byRowId) const {
    std::shared_ptr<Contact> contact;
    // The database writes -1 for a call without a contact.
    if (contactServ != nullptr && byRowId && call.ContactRowId > 0)
        contact = contactServ->FindContactByContactRowId(call.ContactRowId);
    else if (contactServ != nullptr)
        contact = contactServ->FindContactByPhoneNumber(call.Address);
    return contact ? contact : std::make_shared<Contact>();
}

void CallHistoryService::getWhatisExisting(const DeviceInfo& device) {
    getWhatisExistingIos5_6_7(device);
    getWhatisExistingIos8(device);
}

void CallHistoryService::getWhatisExistingIos5_6_7(const DeviceInfo& device) {
    readCalls(device, CallHistoryIOS7641SqliteDbName, kOlderCalls, fillOlder);
}

void CallHistoryService::getWhatisExistingIos8(const DeviceInfo& device) {
    readCalls(device, CallHistoryIOS8SqliteDbName, kNewerCalls, fillNewer);
}

template <class Fill>
void CallHistoryService::readCalls(const DeviceInfo& device, const char* storedName,
                                   const char* statement, Fill fill) {
    SqliteDbName_ = storedName;
    const auto file = ConnectionString(device);
    if (!file) return;
    dbUtils_ = connection(*file);
    if (!dbUtils_->openDatabase()) return;
    for (auto& call : readRows<CallHistory>(dbUtils_->executeQuery(statement), fill)) {
        call->contact = contactOf(*call, storedName == CallHistoryIOS7641SqliteDbName);
        model_.push_back(std::move(call));
        ++retrieved_;
    }
}

}  // namespace salvor
