#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "util/Text.h"

namespace salvor {

/// The kind of space of a database file in which a record was carved.
enum class CarvedSpace : std::uint8_t {
    Gap,        ///< unallocated bytes between cell pointers and cell content of a b-tree page
    Freeblock,  ///< a freeblock of a b-tree page
    FreeList,   ///< found by the free-list pass
    AfterRoot,  ///< found behind the last root page of an auto-vacuum database
    Page,       ///< a page searched whole
    None,       ///< none: the record is live
};

/// "gap", "freeblock", "free-list", "after-root" or "page"; "" for none.
const char* toString(CarvedSpace space);

/// Where a carved record comes from.
struct RecordOrigin {
    Text database;             ///< stored name of the database in the backup; may be empty
    std::uint64_t offset = 0;  ///< file offset at which the matched header begins
    std::uint32_t page = 0;    ///< page number, from 1
    CarvedSpace space = CarvedSpace::Gap;
};

/// The origin of a record, absent for live rows: an optional that costs no more than its value.
class OptionalOrigin {
  public:
    OptionalOrigin() = default;
    OptionalOrigin(std::nullopt_t) {}
    OptionalOrigin(RecordOrigin origin) : origin_(std::move(origin)) {}

    explicit operator bool() const { return origin_.space != CarvedSpace::None; }
    const RecordOrigin& operator*() const { return origin_; }
    const RecordOrigin* operator->() const { return &origin_; }

  private:
    RecordOrigin origin_{.database = {}, .space = CarvedSpace::None};
};

static_assert(sizeof(OptionalOrigin) <= 24);

}  // namespace salvor
