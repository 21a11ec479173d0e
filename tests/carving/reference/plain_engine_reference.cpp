#include <algorithm>
#include <set>

#include "plain_engine.h"
#include "plain_record_loop.h"

namespace salvor::reference {
namespace {

struct DatabaseHeader {
    std::int64_t pageSize = 0;
    std::int64_t numberOfPages = 0;
    std::int64_t firstTrunkPage = 0;
    std::int64_t highestRootPage = 0;
};

/// The four-byte fields are signed.
std::int64_t signedField(const Buffer& file, std::int64_t offset) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(bigEndian(file, offset, 4)));
}

/// The passes over one file.
class PlainEngine {
  public:
    PlainEngine(const std::vector<PlainPattern>& patterns, const PlainOptions& options,
                const Buffer& file)
        : loop_(patterns, options), options_(options), file_(file) {}

    std::vector<CarvedRow> carve();

  private:
    void carveEveryPage();
    void carveAutoVacuum();
    void carveAfterRoot();
    void carveFreeList();
    void carvePage(const Buffer& page, std::int64_t number);
    void carveTreePage(const Buffer& page, std::int64_t number);
    void carveFreeblocks(const Buffer& page, std::int64_t number);
    std::int64_t readPointerMap(const Buffer& page, std::int64_t pagesFound,
                                std::int64_t next) const;
    std::int64_t fileSize() const { return static_cast<std::int64_t>(file_.size()); }

    PlainRecordLoop loop_;
    PlainOptions options_;
    const Buffer& file_;
    DatabaseHeader header_;
};

std::vector<CarvedRow> PlainEngine::carve() {
    if (file_.size() <= 16) return {};
    try {
        header_.pageSize = static_cast<std::int64_t>(bigEndian(file_, 16, 2));
        header_.numberOfPages = signedField(file_, 28);
        header_.firstTrunkPage = signedField(file_, 32);
        header_.highestRootPage = signedField(file_, 52);
    } catch (const RangeFailure&) {
        return {};
    }
    if (header_.pageSize == 0) return {};
    if (header_.highestRootPage > 0) {
        carveAutoVacuum();
        carveAfterRoot();
    } else {
        carveEveryPage();
    }
    if (header_.firstTrunkPage > 0) carveFreeList();
    return loop_.rows;
}

void PlainEngine::carveEveryPage() {
    std::int64_t position = 0;
    std::int64_t n = 1;
    while (fileSize() - position >= header_.pageSize && n <= header_.numberOfPages) {
        const Buffer page = subrange(file_, position, header_.pageSize);
        position += header_.pageSize;
        if (n > 2) carvePage(page, n);
        n += 1;
    }
}

void PlainEngine::carveAutoVacuum() {
    std::int64_t position = 0;
    std::int64_t n = 1;
    std::int64_t nextPointerMapPage = 2;
    std::int64_t pointerMapPages = 0;
    while (fileSize() - position >= header_.pageSize && n <= header_.highestRootPage) {
        const Buffer page = subrange(file_, position, header_.pageSize);
        position += header_.pageSize;
        if (n == nextPointerMapPage) {
            pointerMapPages += 1;
            nextPointerMapPage = readPointerMap(page, pointerMapPages, nextPointerMapPage);
        } else if (n > 1) {
            carvePage(page, n);
        }
        n += 1;
    }
}

/// Returns the next pointer-map page, which stays when this page does not reach its last entry.
std::int64_t PlainEngine::readPointerMap(const Buffer& page, std::int64_t pagesFound,
                                         std::int64_t next) const {
    for (std::int64_t i = 1; i * 5 + 5 <= header_.pageSize;) {
        const std::uint64_t type = bigEndian(page, (i - 1) * 5, 1);
        if (type < 1 || type > 5) break;
        i += 1;
        if (i == header_.pageSize / 5) next = header_.pageSize / 5 + 2 + pagesFound;
    }
    return next;
}

void PlainEngine::carveAfterRoot() {
    std::int64_t position = header_.highestRootPage * header_.pageSize;
    try {
        for (std::int64_t block = 1; fileSize() - position >= header_.pageSize; ++block) {
            const Buffer data = subrange(file_, position, header_.pageSize);
            const std::int64_t number = position / header_.pageSize + 1;
            loop_.parse({data, position, number, CarvedSpace::AfterRoot}, 0);
            position += header_.pageSize;
        }
    } catch (const RangeFailure&) {  // ends the pass, or the page
    }
}

void PlainEngine::carveFreeList() {
    std::int64_t position = (header_.firstTrunkPage - 1) * header_.pageSize;
    try {
        // The count runs from the start of the file, not from the first trunk page.
        for (std::int64_t block = 1; block <= fileSize() / header_.pageSize; ++block) {
            const std::int64_t left = std::max<std::int64_t>(fileSize() - position, 0);
            if (left == 0) break;
            const std::int64_t length = std::min(left, header_.pageSize);
            const Buffer data = subrange(file_, position, length);
            const std::int64_t number = position / header_.pageSize + 1;
            loop_.parse({data, position, number, CarvedSpace::FreeList}, 0);
            position += length;
        }
    } catch (const RangeFailure&) {  // ends the pass, or the page
    }
}

void PlainEngine::carvePage(const Buffer& page, std::int64_t number) {
    if (!options_.fullSearch) {
        carveTreePage(page, number);
        return;
    }
    try {
        loop_.parse({page, (number - 1) * header_.pageSize, number, CarvedSpace::Page}, 0);
    } catch (const RangeFailure&) {  // ends the pass, or the page
    }
}

void PlainEngine::carveTreePage(const Buffer& page, std::int64_t number) {
    try {
        const std::uint64_t type = bigEndian(page, 0, 1);
        if (type != 5 && type != 10 && type != 13) return;
        const auto cells = static_cast<std::int64_t>(bigEndian(page, 3, 2));
        auto contentStart = static_cast<std::int64_t>(bigEndian(page, 5, 2));
        if (contentStart == 0) contentStart = 65536;
        const std::int64_t start = (cells + 8) * 2;
        if (contentStart <= start) return;
        const Buffer gap = subrange(page, start, contentStart - start);
        loop_.parse({gap, (number - 1) * header_.pageSize + start, number, CarvedSpace::Gap}, 0);
        carveFreeblocks(page, number);
    } catch (const RangeFailure&) {
        loop_.processOffset = 0;
    }
}

void PlainEngine::carveFreeblocks(const Buffer& page, std::int64_t number) {
    constexpr std::int64_t mostSearches = 4;  // of a page's bytes, where freeblocks overlap
    std::int64_t searched = 0;
    std::set<std::int64_t> visited;
    auto offset = static_cast<std::int64_t>(bigEndian(page, 1, 2));
    while (offset != 0) {
        if (offset >= static_cast<std::int64_t>(page.size())) return;
        if (!visited.insert(offset).second) return;
        const auto size = static_cast<std::int64_t>(bigEndian(page, offset + 2, 2));
        const Buffer freeblock = subrange(page, offset, size);
        searched += size;
        if (searched > mostSearches * static_cast<std::int64_t>(page.size())) return;
        loop_.processOffset = options_.callList ? 0 : 1;
        const std::int64_t base = (number - 1) * header_.pageSize + offset;
        loop_.parse({freeblock, base, number, CarvedSpace::Freeblock}, 3);
        loop_.processOffset = 0;
        offset = static_cast<std::int64_t>(bigEndian(page, offset, 2));
    }
}

}  // namespace

std::vector<CarvedRow> carvePlainly(const std::vector<PlainPattern>& patterns,
                                    const PlainOptions& options, const Buffer& file) {
    return PlainEngine(patterns, options, file).carve();
}

}  // namespace salvor::reference
