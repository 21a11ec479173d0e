#include "recovery/messages/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"

namespace salvor {
namespace {

using Connection = MessageChatGuidAndChatIdHandleConnection;

// The counterpart stands after the last ";" of a chat GUID.
void storeChatGuid(Connection& link, const OptionalColumnValue& value) {
    link.Guid = columnText(value);
    link.Id.reset();
    if (!link.Guid) return;
    const auto semicolon = link.Guid->rfind(';');
    if (semicolon != std::string::npos) link.Id = link.Guid->substr(semicolon + 1);
}

constexpr ColumnAttribute<Connection> kAttributes[] = {
    {"RowId", storeInteger<&Connection::RowId>},
    {"Guid", storeChatGuid},
};

}  // namespace

constinit const SignatureUse<MessageChatGuidAndChatIdHandleConnection>
    MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery::kSignature{
        {"HomeDomain", "sms.db", "MessageChatGuidAndChatIdHandleConnection"}, kAttributes};

MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery::
    MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery(ScanState& state,
                                                           std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

void MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery::recordCarved(
    const std::shared_ptr<Connection>& link) {
    if (maxChatRowId_ > 0 && link->RowId > maxChatRowId_) return;
    if (link->Guid && link->Guid->ends_with('-')) return;
    takeLink ? takeLink(*link) : RecoveredFiltered.push_back(link);
}

}  // namespace salvor
