#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "app/state/ScanState.h"
#include "carving/SqLiteTableSignatures.h"
#include "services/database/FMDBUtils.h"

namespace salvor::testing {

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

inline std::string messageRow(int rowId, const std::string& guid, const std::string& text,
                              int handleId, int date = 400000000) {
    return "(" + std::to_string(rowId) + ",'" + guid + "','" + text + "'," +
           std::to_string(handleId) + ",'SMS',NULL,NULL," + std::to_string(date) + ",0,0,0,NULL,0)";
}

inline std::string groupMessageRow(int rowId, const std::string& address, const std::string& text,
                                   int date = 400000000) {
    return "(" + std::to_string(rowId) + ",'" + address + "'," + std::to_string(date) + ",'" +
           text + "',33,0,NULL,7,NULL,0,0,0)";
}

/// A small message database in a folder of its own, under its stored name, that keeps deleted bytes
/// readable.
class MessageDatabase {
  public:
    MessageDatabase() {
        std::string name = (std::filesystem::temp_directory_path() / "salvorXXXXXX").string();
        folder = ::mkdtemp(name.data());
        path = folder / "3d0d7e5fb2ce288813306e4d4636395e047a3d28";
        // The second page is never examined, so a table that nobody looks at takes it.
        exec("PRAGMA page_size=4096; CREATE TABLE unused(x)");
    }
    MessageDatabase(const MessageDatabase&) = delete;
    MessageDatabase& operator=(const MessageDatabase&) = delete;
    ~MessageDatabase() { std::filesystem::remove_all(folder); }

    void exec(const std::string& sql) const {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
        const auto script =
            "PRAGMA secure_delete=OFF; PRAGMA synchronous=OFF; PRAGMA journal_mode=MEMORY;" + sql;
        EXPECT_EQ(sqlite3_exec(db, script.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sql << ": " << sqlite3_errmsg(db);
        sqlite3_close(db);
    }

    void insert(const std::string& table, const std::string& rows) const {
        exec("INSERT INTO " + table + " VALUES" + rows);
    }

    /// Leaves `rows` whole, the last one first, on a free page at the end of the file, as a table
    /// does that lost all of them. Only the first free page is sure to be searched to its end by
    /// patterns of few columns.
    void insertDeleted(const std::string& columns, const std::string& rows) const {
        exec("CREATE TABLE freed" + columns + "; INSERT INTO freed VALUES" + rows);
        toDrop_.push_back("freed" + std::to_string(toDrop_.size()));
        exec("ALTER TABLE freed RENAME TO " + toDrop_.back());
    }
    void freeDeleted() const {
        for (const auto& table : toDrop_) exec("DROP TABLE " + table);
        toDrop_.clear();
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

    std::string bytes() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path folder;
    std::filesystem::path path;

  private:
    mutable std::vector<std::string> toDrop_;
};

struct PatternText {
    const char* table;
    const char* version;
    const char* header;
    std::vector<AttributesMapping> mappings;
};

inline constexpr const char* kMessageHeader =
    "[1];[1];[1];[31];[-12];[8,9,1];[19];[0];[0];[4];[8,9,4];[8,9,4];[8,9];[0];[8]";

inline std::vector<PatternText> messagePatternTexts() {
    return {
        {"MESSAGE",
         "iOS7",
         kMessageHeader,
         {{"guid", 3},
          {"text", 4},
          {"handle_id", 5},
          {"service", 6},
          {"date", 9},
          {"date_read", 10},
          {"date_delivered", 11},
          {"is_from_me", 12}}},
        {"MESSAGE",
         "iOS6",
         "[1];[1];[1];[-12];[4,8];[-12];[1];[8];[0];[1];[0];[8];[8];[8]",
         {{"address", 3}, {"date", 4}, {"text", 5}, {"flags", 6}}},
        {"HANDLE",
         "iOS7",
         "[1];[1];[1];[27,31];[17];[15,19]",
         {{"id", 3}, {"country", 4}, {"service", 5}}},
        {"ChatMessageJoin", "iOS7", "[0];[1];[1]", {{"chatId", 1}, {"messageId", 2}}},
        {"ChatHandleJoin", "iOS7", "[0];[1];[1]", {{"chatId", 1}, {"handleId", 2}}},
        {"MessageGuidAndRowIdConnection", "iOS7", kMessageHeader, {{"RowId", 0}, {"Guid", 3}}},
        {"MessageChatGuidAndChatIdHandleConnection",
         "iOS7",
         "[1];[1];[1];[45];[-12];[0]",
         {{"Guid", 3}}},
    };
}

inline std::shared_ptr<SqLiteTableSignatures> makeSignatures(
    const std::vector<PatternText>& patterns = messagePatternTexts()) {
    auto signatures = std::make_shared<SqLiteTableSignatures>();
    for (const auto& text : patterns) {
        auto signature = signatures->Find("HomeDomain", "sms.db", text.table);
        if (signature == nullptr) {
            signature = std::make_shared<SQLiteSignature>();
            signature->Name = "HomeDomain";
            signature->Database = "sms.db";
            signature->Table = text.table;
            signatures->tableSignatures.push_back(signature);
        }
        auto pattern = std::make_shared<TablePattern>();
        pattern->SupportedVersions = {text.version};
        pattern->headerPattern = text.header;
        pattern->hasHeader = true;
        pattern->AttributesMapping = text.mappings;
        signature->TablePatterns.push_back(pattern);
    }
    return signatures;
}

/// A database, and the state of a scan over its folder.
class MessageScan : public ::testing::Test {
  protected:
    MessageScan() {
        state.BACKUP_DIRECTORY = database.folder.string();
        state.recoverySignatures = makeSignatures();
    }

    template <class Carver>
    List<baseRecoveryObject> carve(std::stop_token cancelled = {}) {
        Carver carver(state, cancelled);
        carver.DoRecoveryPath(database.path);
        return carver.RecoveredFiltered;
    }

    template <class Record>
    static std::vector<const Record*> as(const List<baseRecoveryObject>& records) {
        std::vector<const Record*> typed;
        for (const auto& record : records)
            typed.push_back(dynamic_cast<const Record*>(record.get()));
        return typed;
    }

    MessageDatabase database;
    ScanState state;
};

}  // namespace salvor::testing
