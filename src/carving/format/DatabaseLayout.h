#pragma once

#include <cstdint>
#include <optional>

#include "util/Bytes.h"

namespace salvor {

enum class TextEncoding : std::uint8_t { Utf8 = 1, Utf16Le = 2, Utf16Be = 3 };

/// What page 1 says of a database: bytes 0 to 99 of the file format. Unlike `SQLiteHeader` it is
/// checked, and 1 is a page of 65536 bytes.
struct DatabaseLayout {
    std::uint32_t pageSize = 0;
    std::uint32_t usable = 0;         ///< bytes of a page without the reserved ones at its end
    std::uint32_t pagesInHeader = 0;  ///< 0 where the header's count is not valid
    std::uint32_t firstTrunk = 0;
    std::uint32_t freePages = 0;
    std::uint32_t schemaFormat = 0;
    bool autoVacuum = false;
    bool incrementalVacuum = false;
    TextEncoding encoding = TextEncoding::Utf8;

    /// Nothing when the bytes do not begin with SQLite's words or the page size is none.
    static std::optional<DatabaseLayout> read(Bytes firstPage);
    /// Without the header: what a file of pages of this size has at least.
    static DatabaseLayout plain(std::uint32_t pageSize);

    bool smallIntegers() const { return schemaFormat == 0 || schemaFormat >= 4; }
    /// The page that holds the lock bytes and is never used.
    std::uint32_t lockPage() const { return 0x40000000u / pageSize + 1; }
    /// Whether `page` is a pointer-map page.
    bool isPointerMap(std::uint32_t page) const;
};

bool isPageSize(std::uint32_t size);

}  // namespace salvor
