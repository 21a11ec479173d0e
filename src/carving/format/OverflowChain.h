#pragma once

#include <cstdint>
#include <functional>

#include "carving/format/PageStore.h"

namespace salvor {

/// Gives the page of a number at the time of a cell; an empty view ends the chain.
using PageAtTime = std::function<Bytes(std::uint32_t page)>;

/// How many overflow pages a payload needs of which `rest` bytes lie outside its cell.
inline std::uint64_t overflowPages(std::uint64_t rest, std::uint32_t usable) {
    return (rest + usable - 5) / (usable - 4);
}

/// Follows the chain that begins with page `first` and shows each page's part of `rest` bytes.
/// True when the chain has as many pages as it needs and its last one names no further page.
bool followOverflow(std::uint32_t first, std::uint64_t rest, std::uint32_t usable,
                    const PageAtTime& page,
                    const std::function<void(std::uint32_t page, Bytes part)>& show);

}  // namespace salvor
