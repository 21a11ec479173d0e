#include "tests/support/Damage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "tools/sample/Digest.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHeaderBytes = 100;
constexpr unsigned char kInteriorTable = 0x05;
constexpr unsigned char kLeafTable = 0x0D;

void cutFile(const fs::path& file, SampleRandom& random) {
    fs::resize_file(file, random.below(fs::file_size(file)));
}

void fillWithNoise(std::string& bytes, std::size_t from, std::size_t to, SampleRandom& random) {
    for (std::size_t i = from; i < to; ++i) bytes[i] = static_cast<char>(random.below(256));
}

template <std::size_t From>
void noise(const fs::path& file, SampleRandom& random) {
    auto bytes = readWholeFile(file);
    fillWithNoise(bytes, std::min(From, bytes.size()), bytes.size(), random);
    writeWholeFile(file, bytes);
}

// Damage through SQL.

struct Column {
    std::string table;
    std::string name;
};

std::vector<std::string> tables(SqliteFile& database) {
    std::vector<std::string> names;
    for (const auto& row : database.query("SELECT name FROM sqlite_master WHERE type = 'table' "
                                          "AND name NOT LIKE 'sqlite_%'"))
        names.push_back(std::get<std::string>(row.front()));
    return names;
}

std::vector<Column> columns(SqliteFile& database) {
    std::vector<Column> found;
    for (const auto& table : tables(database)) {
        for (const auto& row : database.query("SELECT name FROM pragma_table_info(?)", {table}))
            found.push_back({table, std::get<std::string>(row.front())});
    }
    return found;
}

void tryTo(SqliteFile& database, const std::string& sql, const SqliteRow& parameters = {}) {
    try {
        database.execute(sql, parameters);
    } catch (const std::runtime_error&) {  // a row id or a unique column keeps its values
    }
}

void foreignSchema(const fs::path& file, SampleRandom&) {
    SqliteFile database(file, {});
    database.execute("CREATE TABLE music (id INTEGER PRIMARY KEY, title TEXT)");
    database.execute("INSERT INTO music VALUES (1, 'Etude')");
    database.close();
}

/// Puts what `sqlOf` its name says in the place of every table.
template <class Sql>
void replaceTables(const fs::path& file, Sql sqlOf) {
    SqliteFile database(file);
    const auto names = tables(database);
    for (const auto& name : names) {
        database.execute("DROP TABLE \"" + name + "\"");
        database.execute(sqlOf("\"" + name + "\""));
    }
    database.close();
}

void missingColumns(const fs::path& file, SampleRandom&) {
    replaceTables(file, [](const std::string& name) {
        return "CREATE TABLE " + name + " (x); INSERT INTO " + name + " VALUES (1)";
    });
}

void viewsForTables(const fs::path& file, SampleRandom&) {
    replaceTables(file, [](const std::string& name) {
        return "CREATE VIEW " + name +
               " AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
               "SELECT i AS ROWID, zeroblob(100000000) AS text FROM n";
    });
}

template <class Value>
void everyValue(const fs::path& file, const Value& value) {
    SqliteFile database(file);
    for (const auto& [table, column] : columns(database))
        tryTo(database, "UPDATE \"" + table + "\" SET \"" + column + "\" = ?", {value});
    database.close();
}

// Damage to the b-trees.

std::size_t number(const std::string& bytes, std::size_t at, std::size_t count) {
    std::size_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value = value << 8U | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

void store(std::string& bytes, std::size_t at, std::size_t count, std::size_t value) {
    for (std::size_t i = count; i > 0; --i, value >>= 8U)
        bytes.at(at + i - 1) = static_cast<char>(value & 0xFFU);
}

/// Calls `change` with the start of each page of a kind and of its b-tree header.
template <class Change>
void changePages(const fs::path& file, unsigned char kind, Change change) {
    auto bytes = readWholeFile(file);
    const std::size_t stored = number(bytes, 16, 2);
    const std::size_t size = stored == 1 ? 65536 : stored;
    for (std::size_t page = 0; page + size <= bytes.size(); page += size) {
        const std::size_t header = page == 0 ? kHeaderBytes : page;
        if (static_cast<unsigned char>(bytes[header]) == kind) change(bytes, page, header);
    }
    writeWholeFile(file, bytes);
}

void cyclicTrees(const fs::path& file, SampleRandom&) {
    // Every child of an interior page is the schema's root, or the page itself.
    changePages(file, kInteriorTable, [](std::string& bytes, std::size_t page, std::size_t header) {
        const std::size_t size = number(bytes, 16, 2);
        store(bytes, header + 8, 4, page / size + 1);
        const std::size_t cells = number(bytes, header + 3, 2);
        for (std::size_t i = 0; i < cells; ++i)
            store(bytes, page + number(bytes, header + 12 + 2 * i, 2), 4, 1);
    });
    auto bytes = readWholeFile(file);
    const std::size_t trunk = number(bytes, 32, 4);
    const std::size_t size = number(bytes, 16, 2);
    if (trunk > 0 && trunk * size <= bytes.size()) store(bytes, (trunk - 1) * size, 4, trunk);
    writeWholeFile(file, bytes);
}

void cyclicFreeblocks(const fs::path& file, SampleRandom&) {
    changePages(file, kLeafTable, [](std::string& bytes, std::size_t page, std::size_t header) {
        const std::size_t block = number(bytes, header + 1, 2);
        if (block != 0) store(bytes, page + block, 2, block);
    });
}

/// The first serial types of every record become those of a text of 100 MB.
void hugeTexts(const fs::path& file, SampleRandom&) {
    constexpr std::size_t kTextOf100MB = 13 + 2 * 100'000'000;
    constexpr std::size_t kVarintBytes = 4;
    changePages(file, kLeafTable, [](std::string& bytes, std::size_t page, std::size_t header) {
        const std::size_t cells = number(bytes, header + 3, 2);
        for (std::size_t i = 0; i < cells; ++i) {
            std::size_t at = page + number(bytes, header + 8 + 2 * i, 2);
            for (int varint = 0; varint < 2; ++varint) {
                while ((number(bytes, at, 1) & 0x80U) != 0) ++at;
                ++at;
            }
            if (number(bytes, at, 1) <= kVarintBytes) continue;
            for (std::size_t byte = 0; byte < kVarintBytes; ++byte) {
                const std::size_t bits = kTextOf100MB >> (7 * (kVarintBytes - 1 - byte)) & 0x7FU;
                store(bytes, at + 1 + byte, 1, bits | (byte + 1 < kVarintBytes ? 0x80U : 0U));
            }
        }
    });
}

constexpr std::array kDamages{
    Damage{"missing", [](const fs::path& file, SampleRandom&) { fs::remove(file); }},
    Damage{"empty", [](const fs::path& file, SampleRandom&) { fs::resize_file(file, 0); }},
    Damage{"cut", cutFile},
    Damage{"cut elsewhere", cutFile},
    Damage{"noise", noise<0>},
    Damage{"noise behind the header", noise<kHeaderBytes>},
    Damage{"foreign schema", foreignSchema},
    Damage{"missing columns", missingColumns},
    Damage{"blobs",
           [](const fs::path& file, SampleRandom&) {
               everyValue(file, SqliteBlob{std::string("\x00\xFF\xFE\x1F\x8B", 5)});
           }},
    Damage{"hostile texts",
           [](const fs::path& file, SampleRandom&) {
               everyValue(file,
                          std::string("x' UNION SELECT * FROM sqlite_master -- %s%n/../\xC3\x28"));
           }},
    Damage{"infinities",
           [](const fs::path& file, SampleRandom&) {
               everyValue(file, -std::numeric_limits<double>::infinity());
           }},
    Damage{"dates far away", [](const fs::path& file, SampleRandom&) { everyValue(file, 9.3e17); }},
    Damage{"smallest integers",
           [](const fs::path& file, SampleRandom&) {
               everyValue(file, std::numeric_limits<std::int64_t>::min());
           }},
    Damage{"endless views", viewsForTables},
    Damage{"cyclic trees", cyclicTrees},
    Damage{"cyclic freeblocks", cyclicFreeblocks},
    Damage{"texts of 100 MB", hugeTexts},
};

}  // namespace

std::span<const Damage> databaseDamages() {
    return kDamages;
}

void mutateFile(const fs::path& file, SampleRandom& random) {
    auto bytes = readWholeFile(file);
    if (bytes.empty()) return;
    const auto place = [&] { return static_cast<std::size_t>(random.below(bytes.size())); };
    for (std::uint64_t left = 1 + random.below(20); left > 0 && !bytes.empty(); --left) {
        const std::size_t at = place();
        const std::size_t length = std::min<std::size_t>(1 + random.below(64), bytes.size() - at);
        switch (random.below(8)) {
            case 0:
                fillWithNoise(bytes, at, at + length, random);
                break;
            case 1:
                std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), length, '\xFF');
                break;
            case 2: {
                const auto other = bytes.substr(place(), length);
                bytes.replace(at, std::min(length, other.size()), other, 0, length);
                break;
            }
            case 3:
                if (random.chance(10)) bytes.resize(at);
                break;
            default:
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << random.below(8)));
        }
    }
    writeWholeFile(file, bytes);
}

}  // namespace salvor
