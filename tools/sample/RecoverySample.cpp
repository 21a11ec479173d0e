#include "tools/sample/RecoverySample.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <tuple>

#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEncodings[] = {"UTF-8", "UTF-16le", "UTF-16be"};
constexpr const char* kJournals[] = {"DELETE", "PERSIST", "WAL"};
constexpr const char* kTypes[] = {"TEXT NOT NULL", "TEXT",    "TEXT", "VARCHAR(20)", "INTEGER",
                                  "INTEGER",       "INTEGER", "REAL", "BLOB"};

std::string varint(std::uint64_t value) {
    std::string out(1, static_cast<char>(value & 0x7F));
    while ((value >>= 7) != 0) out.insert(0, 1, static_cast<char>(0x80 | (value & 0x7F)));
    return out;
}

std::string bigEndian(std::uint64_t value, std::size_t bytes) {
    std::string out(bytes, '\0');
    for (std::size_t i = bytes; i-- > 0; value >>= 8) out[i] = static_cast<char>(value & 0xFF);
    return out;
}

/// The serial type and the bytes of an integer.
std::pair<std::uint64_t, std::string> integerBytes(std::int64_t value) {
    if (value == 0 || value == 1) return {value == 0 ? 8 : 9, ""};
    constexpr std::pair<std::uint64_t, std::size_t> kSizes[] = {
        {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 6}};
    for (const auto& [type, bytes] : kSizes) {
        const std::int64_t limit = std::int64_t{1} << (8 * bytes - 1);
        if (value >= -limit && value < limit)
            return {type, bigEndian(static_cast<std::uint64_t>(value), bytes)};
    }
    return {6, bigEndian(static_cast<std::uint64_t>(value), 8)};
}

/// A text of one- and two-byte characters in the database's encoding.
std::string encoded(const std::string& text, std::uint32_t encoding) {
    if (encoding == 0) return text;
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto unit = static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
        if (unit >= 0x80)
            unit = (unit & 0x1Fu) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3Fu);
        const auto high = static_cast<char>(unit >> 8);
        const auto low = static_cast<char>(unit & 0xFFu);
        out += encoding == 1 ? low : high;
        out += encoding == 1 ? high : low;
    }
    return out;
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    if (in) content << in.rdbuf();
    return content.str();
}

/// Whether the four bytes before `at` read as the header of a freeblock on their page.
bool behindFreeblock(const std::string& file, std::size_t at, std::size_t base,
                     std::uint32_t pageSize) {
    if (at < base + 4) return false;
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(file[i]); };
    const std::size_t offset = (at - 4 - base) % pageSize;
    const std::size_t next = std::size_t{byte(at - 4)} << 8 | byte(at - 3);
    const std::size_t size = std::size_t{byte(at - 2)} << 8 | byte(at - 1);
    return size >= 4 && offset + size <= pageSize &&
           (next == 0 || (next >= offset + size && next + 4 <= pageSize));
}

}  // namespace

std::uint64_t RecoverySample::next() {
    state_ += 0x9E3779B97F4A7C15ULL;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31U);
}

RecoverySample::RecoverySample(fs::path path, std::uint64_t seed)
    : path_(std::move(path)), state_(seed * 7919 + 1) {
    for (const char* end : {"-wal", "-journal"}) fs::remove(path_.string() + end);
    chooseLayout(seed);
    const fs::path work = path_.string() + ".work";
    {
        SqliteLayout layout;
        layout.pageSize = pageSize_;
        constexpr AutoVacuum kModes[] = {AutoVacuum::None, AutoVacuum::None, AutoVacuum::Full,
                                         AutoVacuum::Incremental};
        layout.autoVacuum = kModes[below(4)];
        SqliteFile database(work, layout);
        database.execute(fmt::format("PRAGMA encoding='{}'", kEncodings[encoding_]));
        database.execute(
            fmt::format("PRAGMA journal_mode={}", kJournals[static_cast<std::size_t>(journal_)]));
        database.execute("PRAGMA wal_autocheckpoint=60");
        createTable(database);
        description_ += fmt::format(", vacuum {}", toString(layout.autoVacuum));
        insert(database, 40 + static_cast<std::int64_t>(below(400)));
        remove(database);
        if (below(3) == 0) insert(database, static_cast<std::int64_t>(below(60)));
        if (below(3) == 0) remove(database);
        // The log goes with the last connection, so it is taken while that is open.
        for (const char* end : {"", "-wal", "-journal"})
            if (fs::exists(work.string() + end))
                fs::copy_file(work.string() + end, path_.string() + end,
                              fs::copy_options::overwrite_existing);
        database.close();
    }
    for (const char* end : {"", "-wal", "-shm", "-journal"}) fs::remove(work.string() + end);
    tellRemains();
}

void RecoverySample::chooseLayout(std::uint64_t seed) {
    constexpr std::uint32_t kPages[] = {512, 1024, 4096, 4096, 65536};
    pageSize_ = kPages[below(5)];
    encoding_ = below(2) == 0 ? 0 : static_cast<std::uint32_t>(below(3));
    journal_ = static_cast<Journal>(below(3));
    alias_ = below(2) == 0;
    const std::size_t columns = 2 + below(12);
    for (std::size_t i = 0; i < columns; ++i) kinds_.push_back(static_cast<Kind>(below(9)));
    description_ = fmt::format("seed {}, page {}, {}, {}, {} columns{}", seed, pageSize_,
                               kEncodings[encoding_], kJournals[static_cast<std::size_t>(journal_)],
                               columns, alias_ ? ", alias" : "");
}

void RecoverySample::createTable(SqliteFile& database) {
    std::string columns = alias_ ? "id INTEGER PRIMARY KEY" : "";
    for (std::size_t i = 0; i < kinds_.size(); ++i)
        columns += fmt::format("{}c{} {}", columns.empty() ? "" : ", ", i,
                               kTypes[static_cast<std::size_t>(kinds_[i])]);
    database.execute(fmt::format("CREATE TABLE t ({})", columns));
}

SqliteValue RecoverySample::value(Kind kind, std::int64_t number) {
    constexpr const char* kWords[] = {"SMS", "iMessage", "sent", "received", "failed"};
    const auto digits = [this](std::size_t count, const char* alphabet, std::size_t size) {
        std::string out;
        for (std::size_t i = 0; i < count; ++i) out += alphabet[below(size)];
        return out;
    };
    if (kind != Kind::Guid && below(12) == 0) return std::monostate{};
    switch (kind) {
        case Kind::Guid:
            return digits(8, "0123456789ABCDEF", 16) + "-" + digits(4, "0123456789ABCDEF", 16) +
                   "-" + digits(12, "0123456789ABCDEF", 16);
        case Kind::Words:
            return sampleWords(static_cast<std::int64_t>(below(100000)),
                               1 + below(below(60) == 0 ? 300 : 12));
        case Kind::Phone:
            return "+1555" + digits(7, "0123456789", 10);
        case Kind::Word:
            return std::string(kWords[below(5)]);
        case Kind::Date:
            return 390000000 + number * 613 + static_cast<std::int64_t>(below(500));
        case Kind::Number:
            return static_cast<std::int64_t>(below(100000)) - 100;
        case Kind::Small:
            return static_cast<std::int64_t>(below(4));
        case Kind::Real:
            return 0.5 + static_cast<double>(below(1000000)) / 1024.0 + 1e-3;
        case Kind::Blob:
            return SqliteBlob{"bplist" + digits(below(30), "\x01\x02\x80\xFFzy", 6)};
    }
    return std::monostate{};
}

void RecoverySample::insert(SqliteFile& database, std::int64_t count) {
    database.execute("BEGIN");
    for (std::int64_t i = 0; i < count; ++i) {
        SampleRow row;
        for (const Kind kind : kinds_) row.values.push_back(value(kind, inserted_));
        ++inserted_;
        SqliteRow all(alias_ ? 1 : 0);
        for (const SqliteValue& one : row.values) all.push_back(one);
        row.rowId = database.insert("t", all);
        live_.push_back(std::move(row));
    }
    database.execute("COMMIT");
}

void RecoverySample::remove(SqliteFile& database) {
    const std::uint64_t way = below(8);
    const std::size_t from = below(live_.size());
    std::vector<SampleRow> kept;
    database.execute("BEGIN");
    for (std::size_t i = 0; i < live_.size(); ++i) {
        const bool single = way < 4 && below(7) == 0;
        const bool run = way >= 4 && way < 7 && i >= from && i < from + live_.size() / 3;
        if (!single && !run && way != 7) {
            kept.push_back(std::move(live_[i]));
            continue;
        }
        database.execute("DELETE FROM t WHERE rowid=?", {live_[i].rowId});
        deleted_.push_back(std::move(live_[i]));
    }
    database.execute("COMMIT");
    live_ = std::move(kept);
    description_ += way < 4 ? ", single rows deleted" : way < 7 ? ", a run deleted" : ", emptied";
}

std::string RecoverySample::cellOf(const SampleRow& row) const {
    std::string types = alias_ ? std::string(1, '\0') : "";
    std::string body;
    for (const SqliteValue& one : row.values) {
        std::uint64_t type = 0;
        std::string bytes;
        if (const auto* number = std::get_if<std::int64_t>(&one)) {
            std::tie(type, bytes) = integerBytes(*number);
        } else if (const auto* real = std::get_if<double>(&one)) {
            type = 7;
            bytes = bigEndian(std::bit_cast<std::uint64_t>(*real), 8);
        } else if (const auto* text = std::get_if<std::string>(&one)) {
            bytes = encoded(*text, encoding_);
            type = 13 + 2 * bytes.size();
        } else if (const auto* blob = std::get_if<SqliteBlob>(&one)) {
            bytes = blob->bytes;
            type = 12 + 2 * bytes.size();
        }
        types += varint(type);
        body += bytes;
    }
    // No sample has so many columns that the header's length takes two bytes.
    const std::string record = varint(types.size() + 1) + types + body;
    return varint(record.size()) + varint(static_cast<std::uint64_t>(row.rowId)) + record;
}

void RecoverySample::tellRemains() {
    struct File {
        std::string bytes;
        std::size_t base;
        std::uint32_t step;
    };
    // Pages of a log and of a journal lie behind headers, so their offsets are not told there.
    const File files[] = {{readFile(path_), 0, pageSize_},
                          {readFile(path_.string() + "-wal"), 32 + 24, pageSize_ + 24},
                          {readFile(path_.string() + "-journal"), 512 + 4, pageSize_ + 8}};
    for (SampleRow& row : deleted_) {
        const std::string cell = cellOf(row);
        if (cell.size() > pageSize_ - 40) {
            row.remains = CellRemains::Spilled;
            continue;
        }
        const std::string tail = cell.substr(4);
        for (const File& file : files) {
            for (auto at = file.bytes.find(tail); at != std::string::npos && at >= 4;
                 at = file.bytes.find(tail, at + 1)) {
                const bool whole = file.bytes.compare(at - 4, 4, cell, 0, 4) == 0;
                const std::size_t page = (at - 4 - file.base) / file.step * file.step + file.base;
                const bool block = behindFreeblock(file.bytes, at, page, pageSize_);
                if (whole) row.remains = CellRemains::Whole;
                if (block && row.remains == CellRemains::Gone) row.remains = CellRemains::Headless;
            }
        }
    }
}

}  // namespace salvor
