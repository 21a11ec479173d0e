#include <algorithm>
#include <array>

#include "live/DAOs.h"
#include "live/RowDates.h"
#include "live/RowReading.h"
#include "sql/SqlFormat.h"

namespace salvor {
namespace {

constexpr auto kOlderMessages = "SELECT * FROM message";
constexpr auto kMessages =
    "SELECT message.ROWID as realRowId, attributedBody, text, date, id as address, error, "
    "is_from_me,message.handle_id,guid FROM message LEFT JOIN handle ON message.handle_id = "
    "handle.ROWID  ";
constexpr auto kOlderiMessages = "SELECT * FROM message where service = 'iMessage'";
constexpr auto kiMessages =
    "SELECT attributedBody,text,date,id as address,error,is_from_me FROM message INNER JOIN handle "
    "ON message.handle_id = handle.ROWID where message.service = 'iMessage'";
constexpr auto kChatMessageJoin = "SELECT * from chat_message_join";
constexpr auto kChats = "SELECT ROWID,chat_identifier,service_name from chat";
constexpr auto kChatsOf =
    "SELECT chat_identifier, is_from_me, date, text from chat INNER JOIN chat_message_join ON "
    "chat.ROWID = chat_message_join.chat_id INNER JOIN message ON message.ROWID = "
    "chat_message_join.message_id WHERE chat_identifier = '%@'";
constexpr auto kMessageRowIds = "SELECT ROWID,text FROM message";
constexpr auto kMessageGuids = "SELECT guid,ROWID FROM message";
constexpr auto kHandleForHID = "SELECT id FROM handle where ROWID=%d";
constexpr auto kHandleForID = "SELECT id FROM handle where ROWID=%d ";

constexpr std::int32_t kDeletedFlag = 129;  // Kept: older-flags.

struct FlagText {
    std::int32_t flags;
    const char* type;
};

constexpr std::array<FlagText, 7> kFlagTexts = {{{2, "Received from"},
                                                 {3, "Sent to"},
                                                 {22, "Received from"},
                                                 {33, "Message Send Failure"},
                                                 {35, "Message Send Failure"},
                                                 {kDeletedFlag, "Deleted"},
                                                 {131, "Unknown"}}};

Text typeOfFlags(std::int32_t flags) {
    for (const auto& known : kFlagTexts) {
        if (known.flags == flags) return known.type;
    }
    return std::nullopt;
}

/// Kept: no-line-feeds.
Text withoutLineFeeds(Text text) {
    if (!text || text->find('\n') == std::string_view::npos) return text;
    std::string kept(*text);
    std::erase(kept, '\n');
    return kept;
}

/// Kept: message-date-32-bit.
std::string messageDate(const ResultSet& row, bool unixSeconds) {
    const std::int32_t seconds = row.intForColumn("date");
    return unixSeconds ? textOfUnixSeconds(seconds) : textOfReferenceSeconds(seconds);
}

void fillMessage(const ResultSet& row, SMS& sms, bool older) {
    sms.Address = row.stringForColumn("address");
    sms.LocalTime = messageDate(row, older);
    sms.Message = withoutLineFeeds(row.stringForColumn("text"));
    sms.Type = typeOfFlags(row.intForColumn("flags"));
    sms.GUID = row.stringForColumn("guid");
    sms.RowID = row.intForColumn("realRowId");
    if (older) return;
    sms.Type = DAOs::GetMessageType(row.intForColumn("error"), row.intForColumn("is_from_me"));
}

}  // namespace

List<SMS> DAOs::readMessages(const char* olderStatement, const char* statement) {
    const bool older = state_.deviceInfo.iOSMajorVersion < 6;
    List<SMS> list;
    auto rows =
        openCategory(state_.SMS_DATABASE)->executeList({older ? olderStatement : statement});
    rows.keepsOfEachRow(roomOf<SMS>);
    while (rows.next()) {
        if (rows.intForColumn("flags") == kDeletedFlag) continue;
        auto sms = std::make_shared<SMS>();
        fillMessage(rows, *sms, older);
        list.push_back(std::move(sms));
    }
    numberRows(list);
    return list;
}

List<SMS> DAOs::GetSMS() {
    auto list = readMessages(kOlderMessages, kMessages);
    append(state_.AllSMSContent, list);
    state_.SMSCount = static_cast<std::int32_t>(list.size());
    return list;
}

List<SMS> DAOs::GetiMessage() {
    auto list = readMessages(kOlderiMessages, kiMessages);
    append(state_.iMessageContent, list);
    state_.iMessageCount = static_cast<std::int32_t>(list.size());
    return list;
}

List<ChatMessageJoin> DAOs::GetChatMessageJoin() {
    auto list = readRows<ChatMessageJoin>(
        openCategory(state_.SMS_DATABASE)->executeList({kChatMessageJoin}),
        [](const ResultSet& row, ChatMessageJoin& join) {
            join.RowId = row.longLongIntForColumn("rowid");
            join.ChatId = row.longLongIntForColumn("chat_id");
            join.MessageId = row.longLongIntForColumn("message_id");
        });
    numberRows(list);
    append(state_.AllChatMessageJoinContent, list);
    return list;
}

List<Chat> DAOs::GetAllChats() {
    auto list = readRows<Chat>(openCategory(state_.SMS_DATABASE)->executeList({kChats}),
                               [](const ResultSet& row, Chat& chat) {
                                   chat.RowId = row.longLongIntForColumn("ROWID");
                                   chat.chat_identifier = row.stringForColumn("chat_identifier");
                                   chat.servicType = row.stringForColumn("service_name");
                               });
    append(state_.AllChatsContent, list);
    return list;
}

List<Chat> DAOs::GetChatsOf(const Text& chatIdentifier) {
    const bool older = state_.deviceInfo.iOSMajorVersion < 6;
    return readRows<Chat>(
        open(state_.SMS_DATABASE)->executeQuery(formatSql(kChatsOf, {chatIdentifier})),
        [older](const ResultSet& row, Chat& chat) {
            chat.chat_identifier = row.stringForColumn("chat_identifier");
            chat.is_from_me = row.stringForColumn("is_from_me");
            chat.date = messageDate(row, older);
            chat.text = row.stringForColumn("text");
        });
}

std::map<std::int64_t, Text> DAOs::GetAllMessageRowID() {
    return textsByRowId(state_.SMS_DATABASE, kMessageRowIds, "text");
}

std::map<std::string, std::int64_t> DAOs::GetAllMessageGUID() {
    std::map<std::string, std::int64_t> rowIdOfGuid;
    auto rows = open(state_.SMS_DATABASE)->executeQuery(kMessageGuids);
    while (rows.next()) {
        if (auto guid = rows.stringForColumn("guid")) {
            rowIdOfGuid[std::string(*guid)] = rows.longLongIntForColumn("ROWID");
        }
    }
    return rowIdOfGuid;
}

Text DAOs::handleText(const char* statement, std::int32_t handleId, const Text& fallback) {
    const std::lock_guard lock(lookupMutex_);
    const auto [known, isNew] = handleTexts_.try_emplace({statement, handleId});
    if (isNew) {
        if (!numberUTILS_) numberUTILS_ = open(state_.SMS_DATABASE);
        auto rows = numberUTILS_->executeQuery(formatSql(statement, {std::int64_t{handleId}}));
        if (rows.next()) known->second = rows.stringForColumn("id");
    }
    return known->second ? *known->second : fallback;
}

Text DAOs::GetPhoneNumberForHID(std::int32_t handleId, const Text& fallback) {
    return handleText(kHandleForHID, handleId, fallback);
}

Text DAOs::GetPhoneNumberForID(std::int32_t handleId, const Text& fallback) {
    return handleText(kHandleForID, handleId, fallback);
}

std::string DAOs::GetMessageType(std::int32_t error, std::int32_t fromMe) {
    if (error == 4) return "Message Send Failure";
    return fromMe == 1 ? "Sent to" : "Received from";
}

}  // namespace salvor
