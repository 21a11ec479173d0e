#include "services/MessageServices.h"

#include "live/RowReading.h"
#include "scan/StoredNames.h"
#include "services/messageServicesIOS7_8.h"
#include "sql/SqlFormat.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {
namespace {

constexpr auto kChats =
    "SELECT ROWID, chat_identifier, account_id from chat order by chat_identifier";
constexpr std::int32_t kFirstVersionWithChats = 6;
// The range holds every number, and SQLite walks it along the index in which it would look up one
// chat, so that each chat's handles keep their order.
constexpr auto kHandlesOfChats =
    "SELECT chathandlejoin.chat_id, h.ROWID, h.id, h.country, h.service from chat_handle_join "
    "chathandlejoin cross join handle h on h.ROWID = chathandlejoin.handle_id where "
    "chathandlejoin.chat_id between -9223372036854775808 and 9223372036854775807 and "
    "chathandlejoin.chat_id = cast(chathandlejoin.chat_id as integer)";

void fillHandle(const ResultSet& row, MessageHandle& handle) {
    handle.RowId = row.longLongIntForColumn("ROWID");
    handle.Id = row.stringForColumn("id");
    handle.Country = row.stringForColumn("country");
    handle.Service = row.stringForColumn("service");
}

}  // namespace

MessageServices::MessageServices(ScanState& state)
    : abstractServices(state, MessagesSqliteDbName) {}

std::unique_ptr<MessageServices> MessageServices::initwithDevice(ScanState& state,
                                                                 const DeviceInfo& /*device*/) {
    return std::make_unique<messageServicesIOS7_8>(state);
}

void MessageServices::connect(const DeviceInfo& device) {
    dbUtils_ = connection(ConnectionStringfromDevice(device));
}

std::vector<std::int64_t> MessageServices::groupIdsInDB() {
    std::vector<std::int64_t> ids;
    if (dbUtils_ == nullptr || !dbUtils_->openDatabase()) return ids;
    auto rows =
        dbUtils_->executeQuery("SELECT distinct(group_id) from group_member order by group_id");
    while (rows.next()) ids.push_back(rows.longLongIntForColumn("group_id"));
    return ids;
}

List<MessageChat> MessageServices::MessageChatsInDB() {
    List<MessageChat> chats;
    if (dbUtils_ == nullptr) return chats;
    const bool mayLackChats = state_.deviceInfo.iOSMajorVersion < kFirstVersionWithChats;
    auto rows = mayLackChats ? dbUtils_->executeQuery(kChats) : dbUtils_->executeList({kChats});
    rows.keepsOfEachRow(roomOf<ConversationContact>);
    while (rows.next()) {
        auto chat = std::make_shared<MessageChat>();
        chat->RowId = rows.longLongIntForColumn("ROWID");
        chat->ChatIdentifier = rows.stringForColumn("chat_identifier");
        chat->AccountId = rows.stringForColumn("account_id");
        chats.push_back(std::move(chat));
    }
    return chats;
}

List<MessageHandle> MessageServices::GetMesssageHandlesFromMessageChatInDB(
    const MessageChat& chat) {
    if (dbUtils_ == nullptr) return {};
    return readRows<MessageHandle>(
        dbUtils_->executeQuery(formatSql(
            "SELECT h.ROWID, h.id, h.country, h.service from chat_handle_join chathandlejoin inner "
            "join handle h on h.ROWID = chathandlejoin.handle_id where chathandlejoin.chat_id = "
            "%lld",
            {chat.RowId})),
        fillHandle);
}

MessageServices::HandlesOfChats MessageServices::handlesOfChatsInDB() {
    HandlesOfChats handles;
    if (dbUtils_ == nullptr) return handles;
    auto rows = dbUtils_->executeQuery(kHandlesOfChats);
    rows.keepsOfEachRow(sizeof(MessageHandle));
    while (rows.next()) {
        auto handle = std::make_shared<MessageHandle>();
        fillHandle(rows, *handle);
        handles[rows.longLongIntForColumn("chat_id")].push_back(std::move(handle));
    }
    return handles;
}

std::unique_ptr<AbstractSqLiteRecovery> MessageServices::GetRecoveryObject() {
    return std::make_unique<AbstractSqLiteRecovery>(state_, cancelled_);
}

void MessageServices::RecoverDeletedMessages(const DeviceInfo& device) {
    recoverGroupMessages(device);
}

void MessageServices::LoadConversationMessages(
    const std::shared_ptr<ConversationContact>& conversation, const DeviceInfo& device) {
    if (dbUtils_ == nullptr) connect(device);
    if (dbUtils_->sharedDB() == nullptr && !dbUtils_->openDatabase()) return;
    auto rows = dbUtils_->executeQuery(formatSql(
        "SELECT message.ROWID AS MSG_ROW_ID, message.address AS MSG_ADDRESS, message.text, "
        "message.flags, message.group_id, message.country AS MSG_COUNTRY, "
        "DATETIME(message.[date], 'unixepoch', 'localtime') AS DATETIME_MSGDATE FROM message "
        "where message.group_id=%ld order by message.[date] desc, message.ROWID",
        {conversation->GroupId}));
    while (rows.next()) {
        auto message = std::make_shared<Message>();
        message->RowId = rows.longLongIntForColumn("MSG_ROW_ID");
        message->Address = rows.stringForColumn("MSG_ADDRESS");
        message->Text = rows.stringForColumn("text");
        message->Flags = rows.intForColumn("flags");
        message->Country = rows.stringForColumn("MSG_COUNTRY");
        message->Date = rows.stringForColumn("DATETIME_MSGDATE");
        message->IsActivated = true;
        message->IsVisible = true;
        message->ConversationContact = conversation;
        conversation->Messages.push_back(std::move(message));
    }
}

void tieDeletedMessage(const std::shared_ptr<ConversationContact>& conversation, Message& message) {
    conversation->ContainsDeletedMessage = true;
    conversation->NotContainsDeletedMessage = false;
    message.ConversationContact = conversation;
    message.IsActivated = true;
    message.IsVisible = true;
}

ContactPhoneNumber phoneNumberOf(const Text& text) {
    ContactPhoneNumber number;
    number.PhoneNumber = text;
    number.IsPhoneNumber = iPhoneNumberUtils::IsPhoneNumber(text);
    return number;
}

}  // namespace salvor
