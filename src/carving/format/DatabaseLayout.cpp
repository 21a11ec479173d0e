#include "carving/format/DatabaseLayout.h"

#include <algorithm>
#include <string_view>

#include "carving/format/BigEndian.h"

namespace salvor {
namespace {

constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr std::size_t kHeaderSize = 100;
// The format asks for at least 480 usable bytes.
constexpr std::uint32_t kLeastUsable = 480;

}  // namespace

bool isPageSize(std::uint32_t size) {
    return size >= 512 && size <= 65536 && (size & (size - 1)) == 0;
}

DatabaseLayout DatabaseLayout::plain(std::uint32_t pageSize) {
    DatabaseLayout layout;
    layout.pageSize = layout.usable = pageSize;
    return layout;
}

std::optional<DatabaseLayout> DatabaseLayout::read(Bytes page) {
    if (page.size() < kHeaderSize || !std::equal(kMagic.begin(), kMagic.end(), page.begin()))
        return std::nullopt;
    const std::uint32_t stored = bigEndian16(page, 16);
    const std::uint32_t size = stored == 1 ? 65536 : stored;
    if (!isPageSize(size) || size - page[20] < kLeastUsable) return std::nullopt;
    DatabaseLayout layout;
    layout.pageSize = size;
    layout.usable = size - page[20];
    // Versions before 3.7 leave the count alone; it holds only when the change counter says so.
    if (bigEndian32(page, 24) == bigEndian32(page, 92))
        layout.pagesInHeader = bigEndian32(page, 28);
    layout.firstTrunk = bigEndian32(page, 32);
    layout.freePages = bigEndian32(page, 36);
    layout.schemaFormat = bigEndian32(page, 44);
    layout.autoVacuum = bigEndian32(page, 52) != 0;
    layout.incrementalVacuum = layout.autoVacuum && bigEndian32(page, 64) != 0;
    const std::uint32_t encoding = bigEndian32(page, 56);
    if (encoding == 2 || encoding == 3) layout.encoding = static_cast<TextEncoding>(encoding);
    return layout;
}

bool DatabaseLayout::isPointerMap(std::uint32_t page) const {
    if (!autoVacuum || page < 2) return false;
    const std::uint32_t group = usable / 5 + 1;
    std::uint32_t map = (page - 2) / group * group + 2;
    if (map == lockPage()) ++map;
    return map == page;
}

}  // namespace salvor
