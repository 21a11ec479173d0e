// Small files that are made to multiply: in memory, in time or in both.
#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <vector>
#include <zlib.h>

#include "scan/Categories.h"
#include "tests/app/SampleScan.h"
#include "tests/support/BoundedRun.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using C = Category;

constexpr std::size_t kPage = 4096;
constexpr auto kThreeThousand =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 3000) ";

// A scan of these files takes a second and up to 60 MB, and without bounds 400 MB or minutes. A
// sanitizer keeps freed memory and shadows the rest.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t kMostMemory = 1024ULL << 20U;
#else
constexpr std::uint64_t kMostMemory = 256ULL << 20U;
#endif
constexpr RunBounds kBounds{std::chrono::seconds(60), kMostMemory};

void put(std::string& bytes, std::size_t at, std::size_t count, std::size_t value) {
    for (; count > 0; --count, value >>= 8U)
        bytes.at(at + count - 1) = static_cast<char>(value & 0xFFU);
}

std::size_t get(const std::string& bytes, std::size_t at, std::size_t count) {
    std::size_t value = 0;
    for (; count > 0; --count, ++at) value = value << 8U | static_cast<unsigned char>(bytes.at(at));
    return value;
}

/// Runs `sql` and returns the place of the root page of `table`, which is a leaf.
std::size_t leafAfter(const fs::path& file, const std::string& sql, const std::string& table) {
    SqliteFile database(file);
    database.execute(sql);
    database.execute("VACUUM");
    const auto root =
        database.number("SELECT rootpage FROM sqlite_master WHERE name = '" + table + "'");
    database.close();
    return (static_cast<std::size_t>(root) - 1) * kPage;
}

/// An interior page of a table, as full of children as it can be, all of them page `child`.
std::string pageOver(std::size_t child) {
    constexpr std::size_t kCell = 5;
    std::string page(kPage, '\0');
    const std::size_t cells = (kPage - 12) / (kCell + 2);
    put(page, 0, 1, 5);
    put(page, 3, 2, cells);
    put(page, 5, 2, kPage - cells * kCell);
    put(page, 8, 4, child);
    for (std::size_t i = 0; i < cells; ++i) {
        const std::size_t at = kPage - (i + 1) * kCell;
        put(page, 12 + 2 * i, 2, at);
        put(page, at, 4, child);
        put(page, at + 4, 1, 1);
    }
    return page;
}

void oneLeafForAllChildren(const fs::path& file, const std::string& sql, const std::string& table) {
    const std::size_t root = leafAfter(file, sql, table);
    auto bytes = readWholeFile(file);
    ASSERT_EQ(get(bytes, root, 1), 13U);
    bytes += bytes.substr(root, kPage);
    bytes += pageOver(bytes.size() / kPage);
    bytes.replace(root, kPage, pageOver(bytes.size() / kPage));
    put(bytes, 28, 4, bytes.size() / kPage);
    writeWholeFile(file, bytes);
}

void oneCellForAllRows(const fs::path& file, const std::string& sql, const std::string& table) {
    const std::size_t root = leafAfter(file, sql, table);
    auto bytes = readWholeFile(file);
    ASSERT_EQ(get(bytes, root, 1), 13U);
    const std::size_t cells = std::min<std::size_t>((get(bytes, root + 5, 2) - 8) / 2, 680);
    for (std::size_t i = 1; i < cells; ++i)
        put(bytes, root + 8 + 2 * i, 2, get(bytes, root + 8, 2));
    put(bytes, root + 3, 2, cells);
    writeWholeFile(file, bytes);
}

void change(const fs::path& file, const std::vector<std::string>& statements) {
    SqliteFile database(file);
    for (const auto& sql : statements) database.execute(sql);
    database.close();
}

std::vector<std::string> withoutKey(const std::string& table) {
    return {"CREATE TABLE plain AS SELECT * FROM " + table + " LIMIT 0", "DROP TABLE " + table,
            "ALTER TABLE plain RENAME TO " + table};
}

/// The body of a note with a text of so many bytes.
std::string packedNote(std::size_t size) {
    std::string document(size, 'a');
    for (const char key : {'\x12', '\x1A', '\x12'}) {
        std::string head(1, key);
        for (std::size_t rest = document.size(); rest > 0; rest >>= 7U)
            head += static_cast<char>((rest & 0x7FU) | (rest > 0x7FU ? 0x80U : 0U));
        document.insert(0, head);
    }
    z_stream stream{};
    deflateInit2(&stream, 1, Z_DEFLATED, 31, 9, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, document.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(document.data());
    stream.avail_in = static_cast<uInt>(document.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

struct Multiplied {
    const char* name;
    int ios;
    Stored file;
    C category;
    std::function<void(const fs::path& file)> make;
    bool whole = false;  ///< it is only long and can be read to its end
};

const Multiplied kFiles[] = {
    {"messages in one leaf", 7, Stored::Messages, C::Messages,
     [](const auto& file) {
         oneLeafForAllChildren(file, "DELETE FROM message WHERE ROWID > 10", "message");
     }},
    {"links to messages in one leaf", 7, Stored::Messages, C::Messages,
     [](const auto& file) {
         oneLeafForAllChildren(file, "DELETE FROM chat_message_join WHERE ROWID > 200",
                               "chat_message_join");
     }},
    {"persons in one leaf", 7, Stored::AddressBook, C::Contacts,
     [](const auto& file) {
         oneLeafForAllChildren(file, "DELETE FROM ABPerson WHERE ROWID > 10", "ABPerson");
     }},
    {"one message for all rows", 7, Stored::Messages, C::Messages,
     [](const auto& file) {
         oneCellForAllRows(file,
                           "DELETE FROM message WHERE ROWID > (SELECT min(ROWID) FROM message);"
                           "UPDATE message SET text = hex(zeroblob(300000))",
                           "message");
     }},
    {"messages with handles that are all alike", 7, Stored::Messages, C::Messages,
     [](const auto& file) {
         change(file, withoutKey("handle"));
         change(file, {kThreeThousand + std::string("INSERT INTO handle (ROWID, id) SELECT 1, "
                                                    "'+15550100' FROM n"),
                       "UPDATE message SET handle_id = 1"});
     }},
    {"chats with handles that are all alike", 7, Stored::Messages, C::Messages,
     [](const auto& file) {
         change(file, withoutKey("handle"));
         change(file, withoutKey("chat_handle_join"));
         change(file, {kThreeThousand + std::string("INSERT INTO handle (ROWID, id) SELECT 1, "
                                                    "'+15550100' FROM n"),
                       kThreeThousand + std::string("INSERT INTO chat_handle_join SELECT 1, 1 "
                                                    "FROM n")});
     }},
    {"generated addresses", 7, Stored::CallsBefore8, C::Calls,
     [](const auto& file) {
         std::string address = "'12345678'";
         for (int doubled = 0; doubled < 14; ++doubled) address = "hex(" + address + ")";
         change(file, {"DROP TABLE call",
                       "CREATE TABLE call (ROWID INTEGER PRIMARY KEY, date INTEGER, duration "
                       "INTEGER, flags INTEGER, face_time_data BLOB, address TEXT AS (" +
                           address + "))",
                       kThreeThousand + std::string("INSERT INTO call (date) SELECT i FROM n")});
     }},
    {"one large body for all notes", 9, Stored::NotesFrom9, C::Notes,
     [](const auto& file) {
         SqliteFile database(file);
         database.execute("UPDATE ZICNOTEDATA SET ZDATA = ?",
                          {SqliteBlob{packedNote(std::size_t{60} << 20U)}});
         database.close();
     }},
    {"chats by the ten thousand without an index", 7, Stored::Messages, C::Messages,
     [](const auto& file) {
         change(file, withoutKey("chat_handle_join"));
         change(file,
                {"DELETE FROM chat",
                 "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 40000) "
                 "INSERT INTO chat (ROWID, guid) SELECT i, i FROM n",
                 "INSERT INTO chat_handle_join SELECT ROWID, 1 FROM chat"});
     },
     true},
};

/// How many rows each category has.
std::map<C, std::size_t> sizesOf(const ScanState& state) {
    std::map<C, std::size_t> sizes;
    for (const CategoryFacts& facts : categories()) {
        for (const RowKind& kind : facts.kinds) {
            for (const auto& list : {kind.live, kind.deleted})
                sizes[facts.category] +=
                    withList(state, list, [](const auto& rows) { return rows.size(); });
        }
    }
    return sizes;
}

class MultiplyingFiles : public testing::TestWithParam<Multiplied> {};

TEST_P(MultiplyingFiles, CostTheirCategoryNoMoreThanItsRest) {
    const Multiplied& file = GetParam();
    const TempFolder folder;
    const auto sample = SampleBackup::write(folder / "backup", {.ios = file.ios, .messages = 300});
    const auto request = requestFor(sample.folder);
    std::map<C, std::size_t> before;
    {
        SampleScan job;
        ASSERT_EQ(job.run(request), ScanResult::Done);
        before = sizesOf(job.state());
    }
    file.make(sample.folder / storedNameOf(file.file));
    const auto run = runBounded(kBounds, [&] {
        SampleScan job;
        EXPECT_EQ(job.run(request), ScanResult::Done);
        for (const auto& [category, size] : sizesOf(job.state()))
            EXPECT_TRUE(category == file.category || size == before.at(category))
                << factsOf(category).title;
        for (const FileOutcome& one : job.state().fileOutcomes.all()) {
            if (one.file != file.file) {
                EXPECT_EQ(one.reason, "") << storedNameOf(one.file);
            } else if (file.whole) {
                EXPECT_EQ(one.outcome, ReadOutcome::Read) << one.reason;
            } else {
                EXPECT_EQ(one.outcome, ReadOutcome::Partly);
                EXPECT_THAT(one.reason, HasSubstr("than a file of its size explains"));
            }
        }
    });
    EXPECT_EQ(run.failure, "") << run.memory << " bytes, " << run.time.count() << " ms";
}

INSTANTIATE_TEST_SUITE_P(Files, MultiplyingFiles, testing::ValuesIn(kFiles), [](const auto& one) {
    std::string name = one.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

}  // namespace
}  // namespace salvor
