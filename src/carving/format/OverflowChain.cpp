#include "carving/format/OverflowChain.h"

#include <algorithm>
#include <unordered_set>

#include "carving/format/BigEndian.h"

namespace salvor {

bool followOverflow(std::uint32_t first, std::uint64_t rest, std::uint32_t usable,
                    const PageAtTime& page,
                    const std::function<void(std::uint32_t page, Bytes part)>& show) {
    std::unordered_set<std::uint32_t> visited;
    std::uint32_t number = first;
    while (rest != 0) {
        if (number == 0 || !visited.insert(number).second) return false;
        const Bytes bytes = page(number);
        if (bytes.size() < usable) return false;
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(rest, usable - 4));
        show(number, bytes.subspan(4, part));
        rest -= part;
        number = bigEndian32(bytes, 0);
    }
    return number == 0;
}

}  // namespace salvor
