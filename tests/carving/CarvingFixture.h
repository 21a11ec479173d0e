#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "carving/AbstractSqLiteRecovery.h"
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

/// Made before the carver that refers to it.
struct OwnState {
    ScanState state;
};

/// A carver that notes what the engine hands on and shows the engine's own state.
template <class Engine = AbstractSqLiteRecovery>
class NotingCarver : public OwnState, public Engine {
  public:
    struct Column {
        std::int64_t index;
        OptionalColumnValue value;
        friend bool operator==(const Column&, const Column&) = default;
    };

    explicit NotingCarver(std::initializer_list<std::shared_ptr<TablePattern>> patterns,
                          std::stop_token cancelled = {})
        : Engine(OwnState::state, std::move(cancelled)) {
        this->tablePatterns.assign(patterns.begin(), patterns.end());
    }

    using Engine::_field;
    using Engine::_processOffset;

    std::int32_t verifyDataPosition(Bytes text) override {
        return position ? position(text) : Engine::verifyDataPosition(text);
    }

    std::vector<Column> columns;         ///< every column, dropped readings included
    std::vector<std::uint64_t> offsets;  ///< where the headers of the records begin
    std::vector<std::int64_t> rowIds;
    bool keep = false;                            ///< fills `RecoveredData`
    std::function<std::int32_t(Bytes)> position;  ///< stands in for the data-start rule

  protected:
    void FillModel(std::int64_t column, const OptionalColumnValue& value,
                   const TablePattern& pattern) override {
        columns.push_back({column, value});
        if (const auto* mapping = pattern.mappingForColumn(column)) _field = mapping->Name;
    }
    void addRecoveredObject() override {
        offsets.push_back(this->_recObject->Origin->offset);
        rowIds.push_back(this->_recObject->RowId);
        if (keep) this->RecoveredData.push_back(this->_recObject);
    }
};

}  // namespace salvor::testing
