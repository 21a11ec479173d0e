#include "recovery/messages/MessageChatMessageJoinSQLiteRecovery.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<ChatMessageJoin> kAttributes[] = {
    {"chatId", storeInteger<&ChatMessageJoin::ChatId>},
    {"messageId", storeInteger<&ChatMessageJoin::MessageId>},
};

}  // namespace

constinit const SignatureUse<ChatMessageJoin> MessageChatMessageJoinSQLiteRecovery::kSignature{
    {"HomeDomain", "sms.db", "ChatMessageJoin"}, kAttributes};

MessageChatMessageJoinSQLiteRecovery::MessageChatMessageJoinSQLiteRecovery(
    ScanState& state, std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

void MessageChatMessageJoinSQLiteRecovery::recordCarved(
    const std::shared_ptr<ChatMessageJoin>& join) {
    if (join->MessageId <= 0 || join->ChatId <= 0) return;
    takeLink ? takeLink(*join) : RecoveredFiltered.push_back(join);
}

}  // namespace salvor
