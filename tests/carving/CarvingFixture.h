#pragma once

#include <cstdint>
#include <filesystem>
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
    /// Makes page `page` (from 1) a b-tree page.
    void btree(unsigned page, std::uint8_t type, unsigned cells, unsigned contentStart) {
        const std::size_t at = std::size_t{size} * (page - 1);
        bytes.at(at) = type;
        put16(bytes, at + 3, cells);
        put16(bytes, at + 5, contentStart);
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

/// Notes what the engine hands on.
class NotingReceiver : public RowReceiver {
  public:
    std::vector<std::pair<std::int64_t, OptionalColumnValue>> columns;
    std::vector<std::uint64_t> offsets;  ///< where the headers of the rows begin
    std::vector<std::int64_t> rowIds;

    void parse(const std::shared_ptr<TablePattern>& pattern, Bytes data) {
        RecordLoop loop(*this, {});
        loop.use({pattern});
        loop.ParseHeaderAndData({data});
    }

    void rowBegins(std::int64_t rowId, const RecordOrigin& origin) override {
        begun_ = {rowId, origin.offset};
    }
    void columnRead(std::int64_t column, const OptionalColumnValue& value,
                    const TablePattern&) override {
        columns.push_back({column, value});
    }
    std::int32_t correctionFor(Bytes) override { return kNoCorrection; }
    void rowDropped() override {}
    void rowEnds() override {
        rowIds.push_back(begun_.first);
        offsets.push_back(begun_.second);
    }

  private:
    std::pair<std::int64_t, std::uint64_t> begun_;
};

}  // namespace salvor::testing
