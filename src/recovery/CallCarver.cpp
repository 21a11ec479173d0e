#include "recovery/CallCarver.h"

#include <fmt/format.h>

#include "util/DateUtils.h"

namespace salvor {
namespace {

// One for both databases, whose attributes differ.
constexpr SignatureKey kCallRecord{"HomeDomain", "CallHistory.storedata", "zcallrecord"};

void showDate(CallHistory& call, const OptionalColumnValue& value) {
    const auto date = columnDate(value);
    if (date) call.Date = DateUtils::DateTimeToString(*date);
}

void storeOldDate(CallHistory& call, const OptionalColumnValue& value) {
    showDate(call, value);
    call.OriginalDate = static_cast<double>(columnInteger(value));
}

void storeNewDate(CallHistory& call, const OptionalColumnValue& value) {
    call.OriginalDate = columnDouble(value);
    showDate(call, value);
}

void storeOldFlags(CallHistory& call, const OptionalColumnValue& value) {
    call.Flags = static_cast<std::uint8_t>(columnInteger(value));
}

void storeNewFlags(CallHistory& call, const OptionalColumnValue& value) {
    call.Flags = static_cast<std::int32_t>(columnInteger(value));
}

void storeName(CallHistory& call, const OptionalColumnValue& value) {
    call.contact = std::make_shared<Contact>();
    call.contact->NickName = columnText(value);
}

constexpr ColumnAttribute<CallHistory> kOldAttributes[] = {
    {"address", storeText<&CallHistory::Address>},
    {"date", storeOldDate},
    {"duration", storeInteger<&CallHistory::Duration>},
    {"flags", storeOldFlags},
    {"id", storeInteger<&CallHistory::ContactRowId>},
    {"country_code", storeText<&CallHistory::MobileCountryCode>},
    {"network_code", storeText<&CallHistory::MobileNetworkCode>},
    {"read", storeBool<&CallHistory::Read>},
    {"name", storeName},
};

constexpr ColumnAttribute<CallHistory> kNewAttributes[] = {
    {"zaddress", storeText<&CallHistory::Address>},
    {"zdate", storeNewDate},
    {"zfacetimedata", storeInteger<&CallHistory::ZFaceTimeData>},
    {"zoriginated", storeBool<&CallHistory::ZOriginated>},
    {"zduration", storeInteger<&CallHistory::Duration>},
    {"zcalltype", storeNewFlags},
    {"zios_country_code", storeText<&CallHistory::MobileCountryCode>},
};

}  // namespace

constinit const SignatureUse<CallHistory> CallHistorySQLiteRecovery::kSignature{kCallRecord,
                                                                                kOldAttributes};
constinit const SignatureUse<CallHistory> CallHistoryIos8Recovery::kSignature{kCallRecord,
                                                                              kNewAttributes};

CallCarver::CallCarver(ScanState& state, std::stop_token cancelled,
                       const SignatureUse<CallHistory>& use)
    : CategoryCarver(state, std::move(cancelled), use), names_(state) {}

void CallCarver::recordCarved(const std::shared_ptr<CallHistory>& call) {
    const auto row = call->generateCallLogObject(state_, names_.find(call->Address));
    incrementRecoveryCount();
    state_.AllDeletedCallLog.push_back(row);
    state_.DeletedCallLog.push_back(row);
    ++state_.progress.recordsFound;
}

void CallCarver::filterMessages() {
    keepRecordsWithoutLiveRow([](const CallHistory& call) {
        return fmt::format(
            "SELECT ROWID, address, [date] AS CallDate, duration, flags, id, country_code, "
            "network_code FROM call WHERE address == {} and CallDate == {} and duration == {}",
            call.Address.value_or("(null)"), call.Date.value_or("(null)"), call.Duration);
    });
}

std::int32_t CallCarver::setRecoveryCount(std::int32_t count) {
    state_.DeletedCallLogCount = count;
    return count;
}

std::int32_t CallCarver::incrementRecoveryCount() {
    return ++state_.DeletedCallLogCount;
}

CallHistorySQLiteRecovery::CallHistorySQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : CallCarver(state, std::move(cancelled), kSignature) {}

CallHistoryIos8Recovery::CallHistoryIos8Recovery(ScanState& state, std::stop_token cancelled)
    : CallCarver(state, std::move(cancelled), kSignature) {}

void CallHistoryIos8Recovery::recordCarved(const std::shared_ptr<CallHistory>& call) {
    CallCarver::recordCarved(call);
    state_.updateUIfoundRecoveredData();
}

}  // namespace salvor
