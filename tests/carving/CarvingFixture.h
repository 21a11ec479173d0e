#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "carving/CarvingEngine.h"
#include "tests/support/Signatures.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor::testing {

using Buffer = std::vector<std::uint8_t>;

inline Buffer operator+(Buffer left, const Buffer& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Buffer bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

inline void put16(Buffer& bytes, std::size_t at, unsigned value) {
    bytes.at(at) = static_cast<std::uint8_t>(value >> 8);
    bytes.at(at + 1) = static_cast<std::uint8_t>(value);
}

inline void put32(Buffer& bytes, std::size_t at, std::uint32_t value) {
    put16(bytes, at, value >> 16);
    put16(bytes, at + 2, value & 0xFFFFu);
}

/// A database file image of `pages` zeroed pages with the header fields that carving reads.
struct FileImage {
    FileImage(unsigned pageSize, unsigned pages)
        : size(pageSize), bytes(std::size_t{pageSize} * pages) {
        put16(bytes, 16, pageSize);
        put32(bytes, 28, pages);
    }
    void trunkPage(std::uint32_t page) { put32(bytes, 32, page); }
    void largestRootPage(std::uint32_t page) { put32(bytes, 52, page); }
    std::size_t pageStart(unsigned page) const { return std::size_t{size} * (page - 1); }
    /// Makes page `page` (from 1) a b-tree page.
    void btree(unsigned page, std::uint8_t type, unsigned cells, unsigned contentStart,
               unsigned freeblock = 0) {
        const std::size_t at = pageStart(page);
        bytes.at(at) = type;
        put16(bytes, at + 1, freeblock);
        put16(bytes, at + 3, cells);
        put16(bytes, at + 5, contentStart);
    }
    void freeblock(unsigned page, unsigned offset, unsigned next, unsigned length) {
        put16(bytes, pageStart(page) + offset, next);
        put16(bytes, pageStart(page) + offset + 2, length);
    }

    unsigned size;
    Buffer bytes;
};

/// A file that is gone with the object.
class TemporaryFile {
  public:
    explicit TemporaryFile(const Buffer& bytes) {
        writeWholeFile(path(), std::string(bytes.begin(), bytes.end()));
    }
    std::filesystem::path path() const { return folder_ / "file"; }

  private:
    TempFolder folder_;
};

using Patterns = std::initializer_list<std::shared_ptr<TablePattern>>;

/// Notes what the engine hands on.
class NotingReceiver : public RowReceiver {
  public:
    struct Column {
        std::int64_t index;
        OptionalColumnValue value;
        friend bool operator==(const Column&, const Column&) = default;
    };

    std::vector<Column> columns;         ///< every column, dropped readings included
    std::vector<std::uint64_t> offsets;  ///< where the headers of the rows begin
    std::vector<std::int64_t> rowIds;
    std::function<std::int32_t(Bytes)> position = [](Bytes) { return kNoCorrection; };

    RegionEnd parse(Patterns patterns, Bytes data, std::int64_t start = 0) {
        RecordLoop loop(*this, {});
        loop.use({patterns.begin(), patterns.end()});
        Region region{data};
        region.start = start;
        return loop.ParseHeaderAndData(region);
    }

    void rowBegins(std::int64_t rowId, const RecordOrigin& origin) override {
        begun_ = {rowId, origin.offset};
    }
    void columnRead(std::int64_t column, const OptionalColumnValue& value,
                    const TablePattern&) override {
        columns.push_back({column, value});
    }
    std::int32_t correctionFor(Bytes text) override { return position(text); }
    void rowDropped() override {}
    void rowEnds() override {
        rowIds.push_back(begun_.first);
        offsets.push_back(begun_.second);
    }

  private:
    std::pair<std::int64_t, std::uint64_t> begun_;
};

}  // namespace salvor::testing
