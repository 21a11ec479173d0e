#include "recovery/messages/MessageGuidAndRowIdConnectionSQLiteRecovery.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<MessageGuidRowId> kAttributes[] = {
    {"RowId", storeInteger<&MessageGuidRowId::RowId>},
    {"Guid", storeText<&MessageGuidRowId::Guid>},
};

}  // namespace

constinit const SignatureUse<MessageGuidRowId>
    MessageGuidAndRowIdConnectionSQLiteRecovery::kSignature{
        {"HomeDomain", "sms.db", "MessageGuidAndRowIdConnection"}, kAttributes};

MessageGuidAndRowIdConnectionSQLiteRecovery::MessageGuidAndRowIdConnectionSQLiteRecovery(
    ScanState& state, std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

void MessageGuidAndRowIdConnectionSQLiteRecovery::recordCarved(
    const std::shared_ptr<MessageGuidRowId>& link) {
    if (_maxMessageRowId > 0 && link->RowId > _maxMessageRowId) return;
    takeLink ? takeLink(*link) : RecoveredFiltered.push_back(link);
}

}  // namespace salvor
