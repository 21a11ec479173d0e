#include "carving/format/PointerMapPage.h"

#include <algorithm>

namespace salvor {

PointerMapPage PointerMapPage::read(std::int32_t pageNumber, Bytes page) {
    constexpr std::size_t kEntry = std::tuple_size_v<decltype(PointerMap::data)>;
    PointerMapPage result;
    result.pageNumber = pageNumber;
    std::size_t number = 1;
    while (page.size() >= 2 * kEntry && number * kEntry <= page.size() - kEntry) {
        const Bytes bytes = page.subspan((number - 1) * kEntry, kEntry);
        if (bytes[0] < 1 || bytes[0] > 5) break;
        PointerMap entry;
        entry.number = static_cast<std::int32_t>(number);
        std::copy(bytes.begin(), bytes.end(), entry.data.begin());
        result.pointerMaps.push_back(entry);
        ++number;
        if (number == page.size() / kEntry) result.full = true;
    }
    return result;
}

}  // namespace salvor
