#include "sql/StatementGuards.h"

#include <algorithm>
#include <array>
#include <sqlite3.h>
#include <string_view>
#include <utility>

namespace salvor {
namespace {

// Sorted. Functions that build large values out of nothing (zeroblob, printf, group_concat) are
// left out: one step of the virtual machine must stay cheap for the budget to mean
// anything.
constexpr std::array<std::string_view, 28> kFunctions = {
    "abs",      "avg",    "coalesce", "count",     "date",    "datetime", "glob",
    "hex",      "ifnull", "instr",    "julianday", "length",  "like",     "lower",
    "ltrim",    "max",    "min",      "nullif",    "replace", "round",    "rtrim",
    "strftime", "substr", "sum",      "time",      "total",   "trim",     "upper"};

bool isAllowedFunction(const char* name) {
    return name != nullptr &&
           std::any_of(kFunctions.begin(), kFunctions.end(), [name](std::string_view allowed) {
               return sqlite3_stricmp(name, allowed.data()) == 0;
           });
}

int authorise(void*, int action, const char*, const char* second, const char*, const char*) {
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
            return SQLITE_OK;
        case SQLITE_FUNCTION:
            return isAllowedFunction(second) ? SQLITE_OK : SQLITE_DENY;
        default:
            return SQLITE_DENY;
    }
}

constexpr std::array<std::pair<int, int>, 6> kSettings = {{
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
    // A view that bears a table's name would run a query of the file's own choosing.
    {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
    {SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0},
}};

constexpr std::array<std::pair<int, int>, 5> kLimits = {{
    {SQLITE_LIMIT_SQL_LENGTH, 16 << 20},
    {SQLITE_LIMIT_COMPOUND_SELECT, 20},
    {SQLITE_LIMIT_VDBE_OP, 25000},
    {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
}};

// Generated columns can make long values of short ones. A row of the file itself is shorter than
// the file; the least length leaves room for the statements' own texts.
int longestValue(std::uint64_t fileSize) {
    constexpr std::uint64_t kLeast = 1 << 20;
    constexpr std::uint64_t kMost = 256 << 20;
    return static_cast<int>(std::clamp(fileSize, kLeast, kMost));
}

}  // namespace

void installStatementGuards(sqlite3* db, std::uint64_t fileSize) {
    for (const auto& [setting, value] : kSettings) sqlite3_db_config(db, setting, value, nullptr);
    for (const auto& [limit, value] : kLimits) sqlite3_limit(db, limit, value);
    sqlite3_limit(db, SQLITE_LIMIT_LENGTH, longestValue(fileSize));
    // Sorting must not put files anywhere.
    sqlite3_exec(db, "PRAGMA temp_store = MEMORY", nullptr, nullptr, nullptr);
    // Without modules a virtual table of the file cannot be opened.
    sqlite3_drop_modules(db, nullptr);
    sqlite3_set_authorizer(db, authorise, nullptr);
}

}  // namespace salvor
