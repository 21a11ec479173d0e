#include <fmt/format.h>

#include "tools/sample/MessageStore.h"

namespace salvor {
namespace {

constexpr const char* kMessageColumns =
    "ROWID INTEGER PRIMARY KEY AUTOINCREMENT, address TEXT, date INTEGER, text TEXT, "
    "flags INTEGER, replace INTEGER, svc_center TEXT, group_id INTEGER, association_id INTEGER, "
    "height INTEGER, UIFlags INTEGER, version INTEGER, subject TEXT, country TEXT, headers BLOB, "
    "recipients BLOB, read INTEGER";
constexpr const char* kMadridColumns =
    ", madrid_attributedBody BLOB, madrid_handle TEXT, madrid_version INTEGER, madrid_guid TEXT, "
    "madrid_type INTEGER, madrid_roomname TEXT, madrid_service TEXT, madrid_account TEXT, "
    "madrid_account_guid TEXT, madrid_flags INTEGER, madrid_attachmentInfo BLOB, "
    "madrid_url TEXT, madrid_error INTEGER, is_madrid INTEGER, madrid_date_read INTEGER, "
    "madrid_date_delivered INTEGER";
constexpr const char* kCompanions =
    "CREATE TABLE msg_group (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, type INTEGER, "
    "newest_message INTEGER, unread_count INTEGER, hash INTEGER);"
    "CREATE TABLE group_member (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, group_id INTEGER, "
    "address TEXT, country TEXT);"
    "CREATE TABLE msg_pieces (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id INTEGER, "
    "data BLOB, part_id INTEGER, preview_part INTEGER, content_type TEXT, height INTEGER, "
    "version INTEGER, flags INTEGER, content_id TEXT, content_loc TEXT, headers BLOB);";
constexpr const char* kMadridTables =
    "CREATE TABLE madrid_attachment (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, "
    "attachment_guid TEXT, created_date INTEGER, start_date INTEGER, filename TEXT, "
    "uti_type TEXT, mime_type TEXT, transfer_state INTEGER, is_incoming INTEGER, "
    "message_id INTEGER);"
    "CREATE TABLE madrid_chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, style INTEGER, "
    "state INTEGER, account_id TEXT, properties BLOB, chat_identifier TEXT, service_name TEXT, "
    "guid TEXT, room_name TEXT, account_login TEXT, participants BLOB);"
    "CREATE INDEX madrid_attachment_message_index ON madrid_attachment(message_id);"
    "CREATE INDEX madrid_chat_guid_index ON madrid_chat(guid);"
    "CREATE INDEX madrid_chat_room_name_index ON madrid_chat(room_name);";
constexpr const char* kIndexes =
    "CREATE INDEX message_group_index ON message(group_id, ROWID);"
    "CREATE INDEX message_flags_index ON message(flags);"
    "CREATE INDEX pieces_message_index ON msg_pieces(message_id);";
constexpr const char* kMadridIndexes =
    "CREATE INDEX madrid_guid_index ON message(madrid_guid);"
    "CREATE INDEX madrid_roomname_service_index ON message(madrid_roomname, madrid_service);"
    "CREATE INDEX madrid_handle_service_index ON message(madrid_handle, madrid_service);";
constexpr const char* kAccountGuid = "5A3C1D52-7B1E-4F0A-9C64-0B8F2D1E7A90";

const SqliteValue kNull;
const SqliteValue kZero = std::int64_t{0};

class GroupMessageStore : public MessageStore {
  public:
    GroupMessageStore(SqliteFile& database, int ios) : database_(database), ios_(ios) {}

    void create(const std::vector<SampleChat>& chats) override {
        database_.execute(
            "CREATE TABLE _SqliteDatabaseProperties (key TEXT, value TEXT, UNIQUE(key))");
        database_.execute(fmt::format("CREATE TABLE message ({}{})", kMessageColumns,
                                      ios_ >= 5 ? kMadridColumns : ""));
        database_.execute(kCompanions);
        if (ios_ >= 5) database_.execute(kMadridTables);
        database_.execute(kIndexes);
        if (ios_ >= 5) database_.execute(kMadridIndexes);
        database_.execute("INSERT INTO _SqliteDatabaseProperties VALUES('_ClientVersion', '" +
                          std::string(ios_ >= 5 ? "21" : "14") + "')");
        for (const auto& chat : chats) addChat(chat);
    }

    std::int64_t add(const SampleMessage& message) override {
        const bool madrid = hasGuid(message);
        SqliteRow row{kNull,
                      madrid ? kNull : SqliteValue(addressOf(message)),
                      storedDate(message),
                      orNull(message.text),
                      std::int64_t{message.failed   ? 33
                                   : message.fromMe ? 3
                                                    : 2},
                      kZero,
                      kNull,
                      groups_[message.chat],
                      kZero,
                      kZero,
                      kZero,
                      kZero,
                      orNull(message.subject),
                      std::string("us"),
                      kNull,
                      kNull,
                      std::int64_t{message.fromMe || message.timeRead != 0 ? 1 : 0}};
        if (ios_ >= 5) addMadridColumns(row, message, madrid);
        const auto rowId = database_.insert("message", row);
        if (!message.text && !madrid) addPiece(rowId);
        database_.execute("UPDATE msg_group SET newest_message=? WHERE ROWID=?",
                          {rowId, groups_[message.chat]});
        return rowId;
    }

    void remove(std::int64_t rowId) override {
        database_.execute("DELETE FROM message WHERE ROWID=?", {rowId});
        database_.execute("DELETE FROM msg_pieces WHERE message_id=?", {rowId});
    }

    void removeChat(std::size_t chat) override {
        database_.execute("DELETE FROM msg_group WHERE ROWID=?", {groups_[chat]});
        database_.execute("DELETE FROM group_member WHERE group_id=?", {groups_[chat]});
    }

    // iMessage rows count from 2001, all others from 1970.
    std::int64_t storedDate(const SampleMessage& message) const override {
        return hasGuid(message) ? sinceReference(message.time) : message.time;
    }

    bool hasGuid(const SampleMessage& message) const override {
        return ios_ >= 5 && chats_[message.chat].service == "iMessage";
    }

    std::int64_t chatRowId(std::size_t chat) const override { return groups_[chat]; }
    std::int64_t handleRowId(const SampleMessage&) const override { return 0; }

  private:
    void addChat(const SampleChat& chat) {
        const std::int64_t group = database_.insert(
            "msg_group",
            {kNull, std::int64_t{chat.isGroup() ? 1 : 0}, kZero, kZero, std::int64_t{-1522339201}});
        for (const auto& member : chat.members) {
            database_.insert("group_member", {kNull, group, member, std::string("us")});
        }
        if (ios_ >= 5 && chat.service == "iMessage") addMadridChat(chat);
        groups_.push_back(group);
        chats_.push_back(chat);
    }

    void addMadridChat(const SampleChat& chat) {
        const auto name = chat.isGroup() ? chat.roomName : chat.members[0];
        database_.insert("madrid_chat",
                         {kNull, std::int64_t{chat.isGroup() ? 43 : 45}, std::int64_t{3},
                          std::string(kAccountGuid), kNull, name, std::string("Madrid"),
                          std::string("Madrid;") + (chat.isGroup() ? "+;" : "-;") + name,
                          chat.isGroup() ? SqliteValue(chat.roomName) : kNull,
                          std::string("P:+15550100000"), kNull});
    }

    void addMadridColumns(SqliteRow& row, const SampleMessage& message, bool madrid) const {
        const auto& chat = chats_[message.chat];
        const auto only = [madrid](const SqliteValue& value) { return madrid ? value : kNull; };
        const auto number = [madrid](std::int64_t value) {
            return SqliteValue(madrid ? value : std::int64_t{0});
        };
        const SqliteValue room = chat.isGroup() ? SqliteValue(chat.roomName) : kNull;
        row.insert(row.end(), {kNull, only(addressOf(message)), kZero, only(message.guid), kZero,
                               only(room), only(std::string("Madrid")),
                               only(std::string("P:+15550100000")), only(std::string(kAccountGuid)),
                               only(std::int64_t{message.fromMe ? 12289 : 36869}), kNull, kNull,
                               number(message.failed ? 4 : 0), number(1),
                               number(sinceReference(message.timeRead)),
                               number(sinceReference(message.timeDelivered))});
    }

    void addPiece(std::int64_t message) {
        database_.insert("msg_pieces", {kNull, message, SqliteBlob{std::string(40, '\x89')}, kZero,
                                        kZero, std::string("image/jpeg"), kZero, std::int64_t{1},
                                        kZero, kNull, kNull, kNull});
    }

    std::string addressOf(const SampleMessage& message) const {
        return message.handle.empty() ? chats_[message.chat].members[0] : message.handle;
    }

    SqliteFile& database_;
    int ios_;
    std::vector<SampleChat> chats_;
    std::vector<std::int64_t> groups_;
};

}  // namespace

std::unique_ptr<MessageStore> makeGroupMessageStore(SqliteFile& database, int ios) {
    return std::make_unique<GroupMessageStore>(database, ios);
}

}  // namespace salvor
