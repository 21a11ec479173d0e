#include "sql/LogMerge.h"

#include <memory>
#include <sqlite3.h>
#include <system_error>

namespace salvor {
namespace {

std::string checkpoint(const std::filesystem::path& copy) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(copy.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(opened, sqlite3_close_v2);
    if (result != SQLITE_OK) return sqlite3_errmsg(opened);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    // Exclusive locking needs no shared memory beside the file.
    constexpr auto kMerge =
        "PRAGMA locking_mode=EXCLUSIVE; PRAGMA synchronous=OFF; PRAGMA wal_checkpoint(TRUNCATE)";
    if (sqlite3_exec(opened, kMerge, nullptr, nullptr, nullptr) != SQLITE_OK)
        return sqlite3_errmsg(opened);
    return {};
}

}  // namespace

std::string mergeLog(const std::filesystem::path& copy) {
    std::string failure = checkpoint(copy);
    for (const char* side : {"-wal", "-shm"}) {
        std::error_code ignored;
        std::filesystem::remove(copy.string() + side, ignored);
    }
    return failure;
}

}  // namespace salvor
