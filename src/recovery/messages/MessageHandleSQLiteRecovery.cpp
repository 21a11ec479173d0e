#include "recovery/messages/MessageHandleSQLiteRecovery.h"

#include <algorithm>

#include "sql/SqlFormat.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<MessageHandle> kAttributes[] = {
    {"id", storeText<&MessageHandle::Id>},
    {"country", storeText<&MessageHandle::Country>},
    {"service", storeText<&MessageHandle::Service>},
};

}  // namespace

constinit const SignatureUse<MessageHandle> MessageHandleSQLiteRecovery::kSignature{
    {"HomeDomain", "sms.db", "HANDLE"}, kAttributes};

MessageHandleSQLiteRecovery::MessageHandleSQLiteRecovery(ScanState& state,
                                                         std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

bool MessageHandleSQLiteRecovery::IsValid(const Text& id) {
    if (!id) return false;
    const auto end = std::find(id->begin(), id->end(), '\0');
    return std::all_of(id->begin(), end, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 32 && byte < 127;
    });
}

void MessageHandleSQLiteRecovery::beforeRecovery() {
    database_ = std::make_unique<FMDBUtils>(fullDBPath, state_.sourcePolicy, cancelled_);
    if (!database_->openDatabase()) database_.reset();
}

void MessageHandleSQLiteRecovery::recordCarved(const std::shared_ptr<MessageHandle>& handle) {
    if (IsValid(handle->Id) && !isLive(*handle)) RecoveredFiltered.push_back(handle);
}

bool MessageHandleSQLiteRecovery::isLive(const MessageHandle& handle) {
    if (database_ == nullptr) return false;
    // Kept: unquoted-values.
    const auto sql = formatSql(
        "SELECT ROWID, id, country, service FROM handle where id=%@ and country=%@ and service=%@",
        {handle.Id, handle.Country, handle.Service});
    return database_->executeQuery(sql).next();
}

}  // namespace salvor
