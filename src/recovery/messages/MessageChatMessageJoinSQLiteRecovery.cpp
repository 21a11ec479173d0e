#include "recovery/messages/MessageChatMessageJoinSQLiteRecovery.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<ChatMessageJoin> kAttributes[] = {
    {"chatId", storeInteger<&ChatMessageJoin::ChatId>},
    {"messageId", storeInteger<&ChatMessageJoin::MessageId>},
};

}  // namespace

MessageChatMessageJoinSQLiteRecovery::MessageChatMessageJoinSQLiteRecovery(
    ScanState& state, std::stop_token cancelled)
    : MessageTableCarver(state, std::move(cancelled), "ChatMessageJoin", kAttributes) {}

void MessageChatMessageJoinSQLiteRecovery::recordCarved(
    const std::shared_ptr<ChatMessageJoin>& join) {
    if (join->MessageId > 0 && join->ChatId > 0) RecoveredFiltered.push_back(join);
}

}  // namespace salvor
