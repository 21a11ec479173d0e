#include "recovery/messages/MessageChatHandleJoinSQLiteRecovery.h"

namespace salvor {
namespace {

void storeHandleId(ChatHandleJoin& join, const OptionalColumnValue& value) {
    join.HandleId.reset();
    if (value) join.HandleId = std::to_string(columnInteger(value));
}

constexpr ColumnAttribute<ChatHandleJoin> kAttributes[] = {
    {"chatId", storeInteger<&ChatHandleJoin::ChatId>},
    {"handleId", storeHandleId},
};

}  // namespace

constinit const SignatureUse<ChatHandleJoin> MessageChatHandleJoinSQLiteRecovery::kSignature{
    {"HomeDomain", "sms.db", "ChatHandleJoin"}, kAttributes};

MessageChatHandleJoinSQLiteRecovery::MessageChatHandleJoinSQLiteRecovery(ScanState& state,
                                                                         std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

void MessageChatHandleJoinSQLiteRecovery::recordCarved(
    const std::shared_ptr<ChatHandleJoin>& join) {
    if (join->ChatId <= 0) return;
    takeLink ? takeLink(*join) : RecoveredFiltered.push_back(join);
}

}  // namespace salvor
