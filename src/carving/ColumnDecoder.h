#pragma once

#include <cstdint>

#include "records/ColumnValue.h"
#include "util/Bytes.h"

namespace salvor {

/// What reading one column of a record came to.
struct DecodedColumn {
    bool read = false;          ///< there is a value to hand on, perhaps an absent one
    std::int64_t consumed = 0;  ///< bytes of column data that it took
    OptionalColumnValue value;
};

/// Whether `length` bytes from `begin` on lie wholly inside `data`; `begin` may be negative.
bool liesInside(Bytes data, std::int64_t begin, std::int64_t length);
/// Number of bytes of a text of this serial type, or -1 when it is no text.
std::int64_t textLength(std::int64_t serialType);
/// Decodes the number or blob of this serial type that begins at `begin`. A value that is not
/// wholly inside the data is not read and takes no room.
DecodedColumn decodeColumn(Bytes data, std::int64_t begin, std::int64_t serialType);
/// The bytes as a text: strict UTF-8, zero bytes allowed; absent when they do not decode.
OptionalColumnValue decodeText(Bytes bytes);

}  // namespace salvor
