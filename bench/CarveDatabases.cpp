#include "CarveDatabases.h"

#include <fmt/format.h>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

#include "carving/signatures/SqLiteTableSignaturesParser.h"
#include "tools/sample/SqliteFile.h"

namespace salvor::bench {
namespace {

// About 380 bytes a row, its entry in the index of the GUIDs included.
constexpr std::int64_t kRowsPerMegabyte = 2740;

constexpr const char* kSchema =
    "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, "
    "text TEXT, replace INTEGER DEFAULT 0, service_center TEXT, handle_id INTEGER DEFAULT 0, "
    "subject TEXT, country TEXT, attributedBody BLOB, version INTEGER DEFAULT 0, type INTEGER "
    "DEFAULT 0, service TEXT, account TEXT, account_guid TEXT, error INTEGER DEFAULT 0, date "
    "INTEGER, date_read INTEGER, date_delivered INTEGER, is_delivered INTEGER DEFAULT 0, "
    "is_finished INTEGER DEFAULT 0, is_emote INTEGER DEFAULT 0, is_from_me INTEGER DEFAULT 0)";

constexpr const char* kRows =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {}) "
    "INSERT INTO message SELECT i, printf('%08X-0000-4000-8000-%012X', i * 2654435761 & "
    "4294967295, i), substr('The quick brown fox jumps over the lazy dog, then it rests. ', 1, "
    "10 + i % 50) || i, 0, NULL, i % 40, NULL, NULL, randomblob(120 + i % 90), 10, 0, 'iMessage', "
    "'e:someone@example.org', 'A-' || i, 0, 400000000 + i * 61, 400000000 + i * 61, 0, 1, 1, 0, "
    "i % 2 FROM n";

// Single rows inside live pages, and runs that free whole pages.
constexpr const char* kDeletions =
    "DELETE FROM message WHERE ROWID % 7 = 3 OR (ROWID / 200) % 5 = 2";

constexpr const char* kSignatures = R"(<signatures>
<signature name="HomeDomain" database="sms.db" table="MESSAGE">
  <pattern><version value="iOS6789"/>
    <header>[0];[-40];[-12];[0,1,8,9];[0,-12];[0,1,2,3,4,8,9];[0,-12];[0,-12];[0,-12];[0,1,8,9];[0,1,8,9];[-12];[0,-12];[0,-12];[0,1,2,8,9];[4,5,6];[0,4,8];[0,4,8];[8,9];[8,9];[8,9];[8,9]</header>
    <attributemapping name="guid" column="1"/><attributemapping name="text" column="2"/>
    <attributemapping name="date" column="15"/></pattern>
  <pattern><version value="iOS6789"/>
    <header>[1];[0];[0];[-40];[-12];[0,1,8,9];[0,-12];[0,1,2,3,4,8,9];[0,-12];[0,-12];[0,-12];[0,1,8,9];[0,1,8,9];[-12];[0,-12];[0,-12];[0,1,2,8,9];[4,5,6];[0,4,8];[0,4,8];[8,9];[8,9]</header>
    <attributemapping name="guid" column="3"/><attributemapping name="text" column="4"/></pattern>
  <pattern><version value="iOS5"/>
    <header>[0];[-12];[4];[-12];[1,2,8,9];[0,1,2];[0,1,2,8,9];[0,1,2,3,4];[0,1,2,8,9];[0,1,2,8,9];[0,1,2,8,9];[0,-12];[0,-12];[0,-12];[0,1,2,8,9];[0,1,2,8,9];[0,1,2,8,9];[0,1,2,8,9]</header>
    <attributemapping name="text" column="3"/></pattern>
</signature></signatures>)";

}  // namespace

CarveDatabases::CarveDatabases()
    : folder_(std::filesystem::temp_directory_path() / fmt::format("bench-carve-{}", ::getpid())) {
    std::filesystem::create_directories(folder_);
}

CarveDatabases::~CarveDatabases() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::filesystem::path CarveDatabases::file(std::int64_t megabytes, Layout layout) {
    const bool plain = layout == Layout::Plain;
    const auto path = folder_ / fmt::format("{}-{}.db", plain ? "plain" : "vacuum", megabytes);
    if (std::filesystem::exists(path)) return path;
    SqliteLayout options;
    options.autoVacuum = plain ? AutoVacuum::None : AutoVacuum::Incremental;
    SqliteFile database(path, options);
    database.execute("PRAGMA synchronous = OFF");
    database.execute(kSchema);
    database.execute(fmt::format(fmt::runtime(kRows), megabytes * kRowsPerMegabyte));
    database.execute(kDeletions);
    database.close();
    return path;
}

const SqLiteTableSignatures& messageSignatures() {
    static const SqLiteTableSignatures kLoaded = [] {
        SqLiteTableSignatures signatures;
        const std::string_view text = kSignatures;
        SqLiteTableSignaturesParser parser(
            Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
        parser.setSqLiteTableSignatures(&signatures);
        if (!parser.parseTableSignatures()) throw std::runtime_error(parser.fault());
        return signatures;
    }();
    return kLoaded;
}

}  // namespace salvor::bench
