#pragma once

#include "tests/support/ScanFixture.h"
#include "tests/support/Signatures.h"
#include "tests/support/Told.h"

namespace salvor {

inline constexpr const char* kMessageColumns =
    "(ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT, text TEXT, handle_id INTEGER,"
    " service TEXT, account TEXT, account_guid TEXT, date INTEGER, date_read INTEGER,"
    " date_delivered INTEGER, is_from_me INTEGER, country TEXT, cache_has_attachments INTEGER)";
inline constexpr const char* kHandleColumns =
    "(ROWID INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT, country TEXT, service TEXT)";
inline constexpr const char* kGroupMessageColumns =
    "(ROWID INTEGER PRIMARY KEY AUTOINCREMENT, address TEXT, date INTEGER, text TEXT,"
    " flags INTEGER, replace INTEGER, svc_center TEXT, group_id INTEGER, country TEXT,"
    " read INTEGER, version INTEGER, height INTEGER)";

/// A row with the GUID "GUID-00" and `number`, which is its row id and has two digits.
inline std::string messageRow(int number, const std::string& text, int handleId,
                              int date = 400000000) {
    const auto digits = std::to_string(number);
    return "(" + digits + ",'GUID-00" + (number < 10 ? "0" : "") + digits + "','" + text + "'," +
           std::to_string(handleId) + ",'SMS',NULL,NULL," + std::to_string(date) + ",0,0,0,NULL,0)";
}

inline std::string groupMessageRow(int rowId, const std::string& address, const std::string& text,
                                   int date = 400000000) {
    return "(" + std::to_string(rowId) + ",'" + address + "'," + std::to_string(date) + ",'" +
           text + "',33,0,NULL,7,NULL,0,0,0)";
}

/// A small message database under its stored name, and patterns for its tables.
class MessageScan : public ScanFixture {
  protected:
    static constexpr const char* kName = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";
    static constexpr const char* kMessageHeader =
        "[1];[1];[1];[31];[-12];[8,9,1];[19];[0];[0];[4];[8,9,4];[8,9,4];[8,9];[0];[8]";

    MessageScan() {
        store(kName, "");
        pattern("MESSAGE", "iOS7", kMessageHeader,
                {{"guid", 3},
                 {"text", 4},
                 {"handle_id", 5},
                 {"service", 6},
                 {"date", 9},
                 {"date_read", 10},
                 {"date_delivered", 11},
                 {"is_from_me", 12}});
        for (const char* version : {"iOS6", "iOS4"})
            pattern("MESSAGE", version,
                    "[1];[1];[1];[-12];[4,8];[-12];[1];[8];[0];[1];[0];[8];[8];[8]",
                    {{"address", 3}, {"date", 4}, {"text", 5}, {"flags", 6}});
        pattern("HANDLE", "iOS7", "[1];[1];[1];[27,31];[17];[15,19]",
                {{"id", 3}, {"country", 4}, {"service", 5}});
        pattern("ChatMessageJoin", "iOS7", "[0];[1];[1]", {{"chatId", 1}, {"messageId", 2}});
        pattern("ChatHandleJoin", "iOS7", "[0];[1];[1]", {{"chatId", 1}, {"handleId", 2}});
        pattern("MessageGuidAndRowIdConnection", "iOS7", kMessageHeader,
                {{"RowId", 0}, {"Guid", 3}});
        pattern("MessageChatGuidAndChatIdHandleConnection", "iOS7", "[1];[1];[1];[45];[-12];[0]",
                {{"Guid", 3}});
    }

    void pattern(const char* table, const char* version, const char* header,
                 std::vector<AttributesMapping> names) {
        addPattern(state, "HomeDomain", "sms.db", table,
                   salvor::makePattern(header, std::move(names), {version}));
    }

    void makeChatLayout() const {
        exec(std::string("CREATE TABLE message") + kMessageColumns + ";CREATE TABLE handle" +
             kHandleColumns +
             ";CREATE TABLE chat(ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT,"
             " chat_identifier TEXT, account_id TEXT);"
             "CREATE TABLE chat_handle_join(chat_id INTEGER, handle_id INTEGER);"
             "CREATE TABLE chat_message_join(chat_id INTEGER, message_id INTEGER)");
    }
    void makeGroupLayout() const {
        exec(std::string("CREATE TABLE message") + kGroupMessageColumns +
             ";CREATE TABLE group_member(ROWID INTEGER PRIMARY KEY, group_id INTEGER,"
             " address TEXT, country TEXT)");
    }

    void exec(const std::string& sql) const { write(kName, sql); }
    void insert(const std::string& table, const std::string& rows) const {
        exec("INSERT INTO " + table + " VALUES" + rows);
    }
    void leaveDeleted(const std::vector<DeletedRows>& deleted) const { store(kName, "", deleted); }

    template <class Carver>
    List<baseRecoveryObject> carve(std::stop_token cancelled = {}) {
        Carver carver(state, std::move(cancelled));
        carver.DoRecoveryPath(database);
        return carver.RecoveredFiltered;
    }

    const std::filesystem::path database = folder / kName;
};

/// A record as what it is.
template <class Record>
const Record& as(const std::shared_ptr<baseRecoveryObject>& record) {
    return dynamic_cast<const Record&>(*record);
}

}  // namespace salvor
