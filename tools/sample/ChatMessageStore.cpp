#include <fmt/format.h>
#include <map>
#include <unordered_map>

#include "tools/sample/AttributedText.h"
#include "tools/sample/MessageStore.h"

namespace salvor {
namespace {

constexpr const char* kMessageColumns =
    "ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, text TEXT, "
    "replace INTEGER DEFAULT 0, service_center TEXT, handle_id INTEGER DEFAULT 0, subject TEXT, "
    "country TEXT, attributedBody BLOB, version INTEGER DEFAULT 0, type INTEGER DEFAULT 0, "
    "service TEXT, account TEXT, account_guid TEXT, error INTEGER DEFAULT 0, date INTEGER, "
    "date_read INTEGER, date_delivered INTEGER, is_delivered INTEGER DEFAULT 0, "
    "is_finished INTEGER DEFAULT 0, is_emote INTEGER DEFAULT 0, is_from_me INTEGER DEFAULT 0, "
    "is_empty INTEGER DEFAULT 0, is_delayed INTEGER DEFAULT 0, is_auto_reply INTEGER DEFAULT 0, "
    "is_prepared INTEGER DEFAULT 0, is_read INTEGER DEFAULT 0, "
    "is_system_message INTEGER DEFAULT 0, is_sent INTEGER DEFAULT 0, "
    "has_dd_results INTEGER DEFAULT 0, is_service_message INTEGER DEFAULT 0, "
    "is_forward INTEGER DEFAULT 0, was_downgraded INTEGER DEFAULT 0, "
    "is_archive INTEGER DEFAULT 0, cache_has_attachments INTEGER DEFAULT 0, "
    "cache_roomnames TEXT, was_data_detected INTEGER DEFAULT 0, "
    "was_deduplicated INTEGER DEFAULT 0";
constexpr const char* kLaterColumns =
    ", is_audio_message INTEGER DEFAULT 0, is_played INTEGER DEFAULT 0, date_played INTEGER, "
    "item_type INTEGER DEFAULT 0, other_handle INTEGER DEFAULT -1, group_title TEXT, "
    "group_action_type INTEGER DEFAULT 0, share_status INTEGER, share_direction INTEGER, "
    "is_expirable INTEGER DEFAULT 0, expire_state INTEGER DEFAULT 0, "
    "message_action_type INTEGER DEFAULT 0, message_source INTEGER DEFAULT 0";
constexpr const char* kJoins =
    "CREATE TABLE chat_handle_join (chat_id INTEGER REFERENCES chat (ROWID) ON DELETE CASCADE, "
    "handle_id INTEGER REFERENCES handle (ROWID) ON DELETE CASCADE, UNIQUE(chat_id, handle_id));"
    "CREATE TABLE chat_message_join (chat_id INTEGER REFERENCES chat (ROWID) ON DELETE CASCADE, "
    "message_id INTEGER REFERENCES message (ROWID) ON DELETE CASCADE, "
    "PRIMARY KEY (chat_id, message_id));"
    "CREATE TABLE message_attachment_join (message_id INTEGER REFERENCES message (ROWID) "
    "ON DELETE CASCADE, attachment_id INTEGER REFERENCES attachment (ROWID) ON DELETE CASCADE, "
    "UNIQUE(message_id, attachment_id));";
constexpr const char* kIndexes =
    "CREATE INDEX message_idx_is_read ON message(is_read, is_from_me, is_finished);"
    "CREATE INDEX message_idx_failed ON message(is_finished, is_from_me, error);"
    "CREATE INDEX message_idx_handle ON message(handle_id, date);"
    "CREATE INDEX chat_idx_identifier ON chat(chat_identifier);"
    "CREATE INDEX chat_idx_room_name ON chat(room_name);"
    "CREATE INDEX message_idx_was_downgraded ON message(was_downgraded);";
constexpr const char* kAccountGuid = "9D4E1F66-2C07-4E5B-8A31-6F5D0C2B9E14";

const SqliteValue kNull;
const SqliteValue kZero = std::int64_t{0};
const SqliteValue kOne = std::int64_t{1};

SqliteValue flag(bool value) {
    return std::int64_t{value ? 1 : 0};
}

std::string chatTable(int ios) {
    std::string sql =
        "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, "
        "style INTEGER, state INTEGER, account_id TEXT, properties BLOB, chat_identifier TEXT, "
        "service_name TEXT, room_name TEXT, account_login TEXT, is_archived INTEGER DEFAULT 0, "
        "last_addressed_handle TEXT";
    if (ios >= 7) sql += ", display_name TEXT";
    if (ios >= 9) sql += ", group_id TEXT, is_filtered INTEGER, successful_query INTEGER";
    return sql + ")";
}

std::string attachmentTable(int ios) {
    std::string sql =
        "CREATE TABLE attachment (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, "
        "guid TEXT UNIQUE NOT NULL, created_date INTEGER DEFAULT 0, "
        "start_date INTEGER DEFAULT 0, filename TEXT, uti TEXT, mime_type TEXT, "
        "transfer_state INTEGER DEFAULT 0, is_outgoing INTEGER DEFAULT 0";
    if (ios >= 7) {
        sql += ", user_info BLOB, transfer_name TEXT, total_bytes INTEGER DEFAULT 0";
    }
    return sql + ")";
}

class ChatMessageStore : public MessageStore {
  public:
    ChatMessageStore(SqliteFile& database, int ios) : database_(database), ios_(ios) {}

    void create(const std::vector<SampleChat>& chats) override {
        createTables();
        for (const auto& chat : chats) addChat(chat);
    }

    std::int64_t add(const SampleMessage& message) override {
        const auto& chat = chats_[message.chat];
        const SqliteValue handle =
            message.handle.empty() ? std::int64_t{0} : handleOf(message.handle, chat.service);
        SqliteRow row{kNull,
                      message.guid,
                      orNull(message.text),
                      kZero,
                      kNull,
                      handle,
                      orNull(message.subject),
                      kNull,
                      message.text ? SqliteValue(SqliteBlob{attributedText(*message.text)}) : kNull,
                      std::int64_t{10},
                      kZero,
                      chat.service,
                      chat.service == "SMS" ? std::string("p:") : std::string("p:+15550100000"),
                      std::string(kAccountGuid),
                      std::int64_t{message.failed ? 4 : 0},
                      storedDate(message),
                      sinceReference(message.timeRead),
                      sinceReference(message.timeDelivered)};
        addFlags(row, message, chat);
        if (ios_ >= 8) addLaterColumns(row, message);
        const auto rowId = database_.insert("message", row);
        joins_[rowId] = database_.insert("chat_message_join", {rowIds_[message.chat], rowId});
        return rowId;
    }

    void remove(std::int64_t rowId) override {
        if (ios_ >= 9) {
            database_.execute(
                "INSERT INTO deleted_messages(guid) "
                "SELECT guid FROM message WHERE ROWID=?",
                {rowId});
        }
        database_.execute("DELETE FROM message WHERE ROWID=?", {rowId});
        database_.execute("DELETE FROM chat_message_join WHERE ROWID=?", {joins_[rowId]});
    }

    void removeChat(std::size_t chat) override {
        database_.execute("DELETE FROM chat WHERE ROWID=?", {rowIds_[chat]});
        database_.execute("DELETE FROM chat_handle_join WHERE chat_id=?", {rowIds_[chat]});
        database_.execute("DELETE FROM handle WHERE id=?", {chats_[chat].members[0]});
    }

    std::int64_t storedDate(const SampleMessage& message) const override {
        return sinceReference(message.time);
    }
    bool hasGuid(const SampleMessage&) const override { return true; }
    std::int64_t chatRowId(std::size_t chat) const override { return rowIds_[chat]; }
    std::int64_t handleRowId(const SampleMessage& message) const override {
        const auto known = handles_.find(keyOf(message.handle, chats_[message.chat].service));
        return known == handles_.end() ? 0 : known->second;
    }

  private:
    void createTables() {
        database_.execute(
            "CREATE TABLE _SqliteDatabaseProperties (key TEXT, value TEXT, UNIQUE(key))");
        database_.execute(fmt::format("CREATE TABLE message ({}{})", kMessageColumns,
                                      ios_ >= 8 ? kLaterColumns : ""));
        database_.execute(chatTable(ios_));
        database_.execute(attachmentTable(ios_));
        database_.execute(
            "CREATE TABLE handle (ROWID INTEGER PRIMARY KEY AUTOINCREMENT UNIQUE, "
            "id TEXT NOT NULL, country TEXT, service TEXT NOT NULL, uncanonicalized_id TEXT, "
            "UNIQUE(id, service))");
        database_.execute(kJoins);
        if (ios_ >= 9) {
            database_.execute(
                "CREATE TABLE deleted_messages (ROWID INTEGER PRIMARY KEY "
                "AUTOINCREMENT UNIQUE, guid TEXT NOT NULL)");
        }
        database_.execute(kIndexes);
        database_.execute("INSERT INTO _SqliteDatabaseProperties VALUES('_ClientVersion', '" +
                          std::to_string(ios_ * 1000 + 6) + "')");
    }

    void addChat(const SampleChat& chat) {
        const bool group = chat.isGroup();
        const auto name = group ? chat.roomName : chat.members[0];
        SqliteRow row{kNull,
                      chat.service + (group ? ";+;" : ";-;") + name,
                      std::int64_t{group ? 43 : 45},
                      std::int64_t{3},
                      std::string(kAccountGuid),
                      kNull,
                      name,
                      chat.service,
                      group ? SqliteValue(name) : kNull,
                      std::string("P:+15550100000"),
                      kZero,
                      std::string("+15550100000")};
        if (ios_ >= 7) row.emplace_back(std::string());
        if (ios_ >= 9) {
            row.insert(row.end(),
                       {std::string("0C1B7E9A-4D3F-4A6E-B2C8-5F7091D3E8A6"), kZero, kOne});
        }
        const auto id = database_.insert("chat", row);
        for (const auto& member : chat.members) {
            database_.insert("chat_handle_join", {id, handleOf(member, chat.service)});
        }
        rowIds_.push_back(id);
        chats_.push_back(chat);
    }

    static std::string keyOf(const std::string& number, const std::string& service) {
        return number + "\n" + service;
    }

    std::int64_t handleOf(const std::string& number, const std::string& service) {
        const auto key = keyOf(number, service);
        const auto known = handles_.find(key);
        if (known != handles_.end()) return known->second;
        const SqliteValue uncanonicalized =
            number[0] == '+' ? SqliteValue(number.substr(2)) : SqliteValue();
        const auto id = database_.insert(
            "handle", {kNull, number, std::string("us"), service, uncanonicalized});
        handles_[key] = id;
        return id;
    }

    /// is_delivered to was_deduplicated.
    void addFlags(SqliteRow& row, const SampleMessage& message, const SampleChat& chat) const {
        const SqliteValue room = chat.isGroup() ? SqliteValue(chat.roomName) : kNull;
        row.insert(row.end(), {flag(message.timeDelivered != 0),
                               kOne,
                               kZero,
                               flag(message.fromMe),
                               kZero,
                               kZero,
                               kZero,
                               kZero,
                               flag(message.timeRead != 0),
                               kZero,
                               flag(message.fromMe && !message.failed),
                               flag(message.hasLinks),
                               kZero,
                               kZero,
                               kZero,
                               kZero,
                               kZero,
                               room,
                               kOne,
                               kZero});
    }

    /// is_audio_message to message_source.
    static void addLaterColumns(SqliteRow& row, const SampleMessage& message) {
        const bool event = message.groupEvent;
        row.insert(row.end(), {kZero, kZero, kZero, std::int64_t{event ? 2 : 0}, kZero,
                               event ? SqliteValue(std::string("Weekend")) : kNull, kZero, kZero,
                               kZero, kZero, kZero, kZero, kZero});
    }

    SqliteFile& database_;
    int ios_;
    std::vector<SampleChat> chats_;
    std::vector<std::int64_t> rowIds_;
    /// Row ids of the joins by message: nothing indexes them by message in the database.
    std::unordered_map<std::int64_t, std::int64_t> joins_;
    std::map<std::string, std::int64_t> handles_;
};

}  // namespace

std::unique_ptr<MessageStore> makeChatMessageStore(SqliteFile& database, int ios) {
    return std::make_unique<ChatMessageStore>(database, ios);
}

}  // namespace salvor
