#include "bench/recall/LinkFigures.h"

#include <set>
#include <utility>

#include "recovery/messages/MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageChatHandleJoinSQLiteRecovery.h"
#include "recovery/messages/MessageChatMessageJoinSQLiteRecovery.h"
#include "recovery/messages/MessageGuidAndRowIdConnectionSQLiteRecovery.h"
#include "recovery/messages/MessageHandleSQLiteRecovery.h"

namespace salvor {
namespace {

using Pair = std::pair<std::int64_t, std::string>;

/// Every link that the sample holds or held, as number and text. A handle counts by its id alone:
/// its row id is among the first bytes that a freeblock takes.
struct TrueLinks {
    std::set<Pair> chatMessages, messageGuids, chatGuids, chatHandles, handles;

    explicit TrueLinks(const SampleBackup& sample) {
        for (const auto* rows : {&sample.truth.live, &sample.truth.deleted}) {
            for (const auto& row : SampleTruth::of(*rows, "message")) addMessage(row);
        }
        SqliteFile database(sample.messageDatabase());
        addRows(database, "SELECT ROWID, guid FROM chat", chatGuids);
        addRows(database, "SELECT 0, id FROM handle", handles);
        addRows(database, "SELECT chat_id, CAST(handle_id AS TEXT) FROM chat_handle_join",
                chatHandles);
    }

  private:
    void addMessage(const TruthRow& row) {
        const auto chat = std::get<std::int64_t>(row.values.at("chatId"));
        const auto handle = std::get<std::int64_t>(row.values.at("handleId"));
        chatMessages.emplace(chat, std::to_string(row.rowId));
        messageGuids.emplace(row.rowId, row.guid.value_or(""));
        if (handle == 0) return;
        chatHandles.emplace(chat, std::to_string(handle));
        handles.emplace(0, row.handle);
        for (const char* service : {"SMS;-;", "iMessage;-;"}) {
            chatGuids.emplace(chat, service + row.handle);
        }
    }

    static void addRows(SqliteFile& database, const char* sql, std::set<Pair>& links) {
        for (const auto& row : database.query(sql)) {
            links.emplace(std::get<std::int64_t>(row[0]), std::get<std::string>(row[1]));
        }
    }
};

template <class Carver, class Record, class Key>
LinkCount carve(const SampleBackup& sample, ScanState& state, const std::set<Pair>& links,
                Key&& keyOf) {
    Carver carver(state);
    carver.DoRecoveryPath(sample.messageDatabase());
    LinkCount count;
    for (const auto& record : carver.RecoveredFiltered) {
        const bool right = links.contains(keyOf(static_cast<const Record&>(*record)));
        ++(right ? count.right : count.wrong);
    }
    return count;
}

}  // namespace

LinkFigures measureLinks(const SampleBackup& sample, ScanState& state) {
    const TrueLinks truth(sample);
    LinkFigures figures;
    figures["HANDLE"] = carve<MessageHandleSQLiteRecovery, MessageHandle>(
        sample, state, truth.handles,
        [](const auto& record) { return Pair(0, record.Id.value_or("")); });
    figures["ChatMessageJoin"] = carve<MessageChatMessageJoinSQLiteRecovery, ChatMessageJoin>(
        sample, state, truth.chatMessages,
        [](const auto& record) { return Pair(record.ChatId, std::to_string(record.MessageId)); });
    figures["ChatHandleJoin"] = carve<MessageChatHandleJoinSQLiteRecovery, ChatHandleJoin>(
        sample, state, truth.chatHandles,
        [](const auto& record) { return Pair(record.ChatId, record.HandleId.value_or("")); });
    figures["MessageGuidAndRowIdConnection"] =
        carve<MessageGuidAndRowIdConnectionSQLiteRecovery, MessageGuidRowId>(
            sample, state, truth.messageGuids,
            [](const auto& record) { return Pair(record.RowId, record.Guid.value_or("")); });
    figures["MessageChatGuidAndChatIdHandleConnection"] =
        carve<MessageChatGuidAndChatIdHandleConnectionSQLiteRecovery,
              MessageChatGuidAndChatIdHandleConnection>(
            sample, state, truth.chatGuids,
            [](const auto& record) { return Pair(record.RowId, record.Guid.value_or("")); });
    return figures;
}

}  // namespace salvor
