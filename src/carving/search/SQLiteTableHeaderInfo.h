#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "carving/signatures/TablePattern.h"

namespace salvor {

/// A record header that fits a table pattern, found in some searched bytes.
struct SQLiteTableHeaderInfo {
    bool Valid = false;
    std::int64_t HeaderStartIndex = 0;  ///< offset in the searched bytes
    /// Per pattern column its serial type and the number of bytes that its varint took. Fewer
    /// entries than columns when the bytes ended inside the header.
    std::vector<std::array<std::int64_t, 2>> Header;
    std::int64_t RowId = 0;  ///< 0 when the pattern has no row-id column
    std::shared_ptr<const TablePattern> tablePattern;
    std::int32_t headerDataTaken = 0;

    std::int32_t HeaderLength() const { return headerDataTaken; }
    /// First byte of the record's column data.
    std::int64_t DataStartIndex() const { return HeaderStartIndex + HeaderLength(); }
    /// The sum of the header bytes, not the size of the column data. Kept: header-sum.
    std::int64_t DataContentLength() const {
        std::int64_t sum = 0;
        for (const auto& entry : Header) sum += entry[1];
        return sum;
    }
};

}  // namespace salvor
