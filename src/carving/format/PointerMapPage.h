#pragma once

#include <cstdint>
#include <vector>

#include "carving/format/PointerMap.h"
#include "util/Bytes.h"

namespace salvor {

/// A pointer-map page of an auto-vacuum database: the entries up to the first whose type is not
/// between 1 and 5, or up to the last but one that the page has room for. Kept: last-map-entry.
struct PointerMapPage {
    std::int32_t pageNumber = 0;
    std::vector<PointerMap> pointerMaps;
    bool full = false;  ///< every entry was taken, so a further pointer-map page follows

    static PointerMapPage read(std::int32_t pageNumber, Bytes page);
};

}  // namespace salvor
