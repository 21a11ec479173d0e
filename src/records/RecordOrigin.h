#pragma once

#include <cstdint>
#include <string>

namespace salvor {

/// The kind of space of a database file in which a record was carved.
enum class CarvedSpace : std::uint8_t {
    Gap,        ///< unallocated bytes between cell pointers and cell content of a b-tree page
    Freeblock,  ///< a freeblock of a b-tree page
    FreeList,   ///< found by the free-list pass
    AfterRoot,  ///< found behind the last root page of an auto-vacuum database
    Page,       ///< a page searched whole
};

/// "gap", "freeblock", "free-list", "after-root" or "page".
const char* toString(CarvedSpace space);

/// Where a carved record comes from.
struct RecordOrigin {
    std::string database;      ///< stored name of the database in the backup; may be empty
    std::uint64_t offset = 0;  ///< file offset at which the matched header begins
    std::uint32_t page = 0;    ///< page number, from 1
    CarvedSpace space = CarvedSpace::Gap;
};

}  // namespace salvor
