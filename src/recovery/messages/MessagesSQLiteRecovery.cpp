#include "recovery/messages/MessagesSQLiteRecovery.h"

#include "recovery/messages/MessageDates.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<Message> kAttributes[] = {
    {"guid", storeText<&Message::Guid>},
    {"text", storeText<&Message::Text>},
    {"handle_id", storeInteger<&Message::HandleId>},
    {"service", storeText<&Message::Service>},
    {"account", storeText<&Message::Account>},
    {"account_guid", storeText<&Message::AccountGuid>},
    {"date", storeMessageDate},
    {"date_read", storeMessageDateRead},
    {"date_delivered", storeMessageDateDelivered},
    {"is_from_me", storeBool<&Message::IsFromMe>},
};

}  // namespace

constinit const SignatureUse<Message> MessagesSQLiteRecovery::kSignature{
    {"HomeDomain", "sms.db", "MESSAGE"}, kAttributes};

MessagesSQLiteRecovery::MessagesSQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

void MessagesSQLiteRecovery::recordCarved(const std::shared_ptr<Message>& message) {
    const auto row = message->generateSMSObject(state_);
    if (alreadyInDB(*row)) return;
    incrementRecoveryCount();
    RecoveredFiltered.push_back(message);
    state_.AllDeletedSMS.push_back(row);
    state_.DeletedSMS.push_back(row);
    ++state_.progress.recordsFound;
    state_.updateUIfoundRecoveredData();
}

bool MessagesSQLiteRecovery::alreadyInDB(const SMS& row) {
    indexNewRows(state_.AllSMSContent, liveIndexed_);
    indexNewRows(state_.AllDeletedSMS, deletedIndexed_);
    return guids_.contains(row.GUID);
}

void MessagesSQLiteRecovery::indexNewRows(const List<SMS>& rows, std::size_t& indexed) {
    for (; indexed < rows.size(); ++indexed) guids_.tryEmplace(rows[indexed]->GUID);
}

std::int32_t MessagesSQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletedSMSCount = count;
    return count;
}

std::int32_t MessagesSQLiteRecovery::incrementRecoveryCount() {
    return ++state_.DeletedSMSCount;
}

}  // namespace salvor
