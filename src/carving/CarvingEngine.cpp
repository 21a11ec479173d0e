// The walk over the file: which pages are looked at, and which bytes of a page are searched.
#include "carving/CarvingEngine.h"

#include "carving/format/PointerMapPage.h"
#include "carving/format/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::uint8_t kInteriorTable = 5;
constexpr std::uint8_t kLeafIndex = 10;
constexpr std::uint8_t kLeafTable = 13;

// Without interior index pages (2). Kept: searched-pages.
bool isSearchedPageType(std::uint8_t type) {
    return type == kInteriorTable || type == kLeafIndex || type == kLeafTable;
}

}  // namespace

std::optional<MappedFile> CarvingEngine::open(const std::filesystem::path& path) {
    constexpr std::size_t kTinyFile = 16;
    if (path.empty()) return std::nullopt;
    auto file = MappedFile::open(path);
    if (file && file->bytes().size() <= kTinyFile) file.reset();
    return file;
}

void CarvingEngine::carve(Bytes file, const TablePatterns& patterns, CarvingOptions options) {
    loop_.use(patterns);
    options_ = std::move(options);
    file_ = file;
    if (const auto header = SQLiteHeader::fromBytes(file_)) runPasses(*header);
    file_ = {};
}

void CarvingEngine::runPasses(const SQLiteHeader& header) {
    if (header.PageSize == 0) return;
    pageSize_ = static_cast<std::uint64_t>(header.PageSize);
    if (header.IsAutoVacuum) {
        ProcessAutoVacuumSqliteDatabase(header);
        if (header.HighestNUmberedRootPageNumber > 0) {
            ProcessPagesAfterHighestNumberedRootPage(header);
        }
    } else {
        ProcessNonAutoVacuumSqliteDatabase(header);
    }
    if (header.PageNumberOfFirstListTrunkPage > 0) ProcessFreeListTrunkPage(header);
}

void CarvingEngine::ProcessNonAutoVacuumSqliteDatabase(const SQLiteHeader& header) {
    walkPages(header.NumberOfPages, false);
}

void CarvingEngine::ProcessAutoVacuumSqliteDatabase(const SQLiteHeader& header) {
    walkPages(header.HighestNUmberedRootPageNumber, true);
}

void CarvingEngine::walkPages(std::int32_t lastPage, bool pointerMaps) {
    // Page 2 is left out either way. Kept: walk-of-pages.
    const std::int64_t firstSearched = pointerMaps ? 2 : 3;
    std::uint64_t position = 0;
    std::int64_t nextPointerMap = 2;
    std::int64_t pointerMapPages = 0;
    for (std::int64_t page = 1; page <= lastPage && file_.size() - position >= pageSize_;
         ++page, position += pageSize_) {
        if (cancelled_.stop_requested()) return;
        const Bytes bytes = file_.subspan(position, pageSize_);
        advanced(pageSize_);
        if (pointerMaps && (page == 2 || page == nextPointerMap)) {
            const auto map = PointerMapPage::read(static_cast<std::int32_t>(page), bytes);
            ++pointerMapPages;
            // Not where SQLite puts the third. Kept: walk-of-pages.
            if (map.full) {
                nextPointerMap = static_cast<std::int64_t>(pageSize_ / 5) + 2 + pointerMapPages;
            }
        } else if (page >= firstSearched) {
            ProcessSQLitePage({bytes, position, static_cast<std::uint64_t>(page)});
        }
    }
}

void CarvingEngine::ProcessPagesAfterHighestNumberedRootPage(const SQLiteHeader& header) {
    searchBlocks(static_cast<std::uint64_t>(header.HighestNUmberedRootPageNumber), false,
                 CarvedSpace::AfterRoot);
}

void CarvingEngine::ProcessFreeListTrunkPage(const SQLiteHeader& header) {
    // The trunk chain is not followed. Kept: walk-of-pages.
    searchBlocks(static_cast<std::uint64_t>(header.PageNumberOfFirstListTrunkPage) - 1, true,
                 CarvedSpace::FreeList);
}

// As many blocks as the whole file has pages, from whichever page: the last ones lie behind its
// end, so that a short block at the end is reached unless the first block is page 1.
void CarvingEngine::searchBlocks(std::uint64_t firstPage, bool shortBlocks, CarvedSpace space) {
    std::uint64_t page = firstPage;
    for (std::uint64_t blocks = file_.size() / pageSize_; blocks > 0; --blocks, ++page) {
        const std::uint64_t position = page * pageSize_;
        if (position >= file_.size() || cancelled_.stop_requested()) return;
        const Bytes block = slice(file_, position, pageSize_);
        if (block.size() < pageSize_ && !shortBlocks) return;
        advanced(block.size());
        if (loop_.ParseHeaderAndData({block, position, page + 1, space}) == RegionEnd::ReadFailed)
            return;
    }
}

void CarvingEngine::ProcessSQLitePage(const Page& page) {
    if (search_ == PageSearch::Whole) {
        // A read past the end of the page ends this page alone.
        loop_.ParseHeaderAndData({page.bytes, page.fileOffset, page.number, CarvedSpace::Page});
    } else {
        searchUnused(page);
    }
}

void CarvingEngine::searchUnused(const Page& page) {
    const Bytes bytes = page.bytes;
    if (bytes.empty() || cancelled_.stop_requested() || !isSearchedPageType(bytes[0])) return;
    const auto cells = SQLiteUtils::convertToint16fromData(bytes, 3);
    const auto storedStart = SQLiteUtils::convertToint16fromData(bytes, 5);
    if (!cells || !storedStart) return;
    const std::size_t contentStart = *storedStart == 0 ? 65536 : *storedStart;
    // Kept: gap-eight-bytes-on.
    const std::size_t gapStart = (std::size_t{*cells} + 8) * 2;
    if (contentStart <= gapStart || contentStart > bytes.size()) return;
    const Bytes gap = bytes.subspan(gapStart, contentStart - gapStart);
    if (loop_.ParseHeaderAndData(
            {gap, page.fileOffset + gapStart, page.number, CarvedSpace::Gap}) == RegionEnd::Done)
        searchFreeblocks(page);
}

void CarvingEngine::searchFreeblocks(const Page& page) {
    // From the last byte of the size field on. Kept: freeblock-one-later.
    constexpr std::int64_t kStart = 3;
    // Freeblocks share no bytes; a damaged page may have some that do, a page that is made to take
    // time has thousands that reach to its end.
    constexpr std::size_t kMostSearches = 4;
    std::size_t searchable = kMostSearches * page.bytes.size();
    const std::int32_t processOffset = options_.callList ? 0 : 1;
    std::uint16_t offset = SQLiteUtils::NextFreeblockOffset(page.bytes, 1).value_or(0);
    if (offset == 0) return;
    for (freeblocks_.begin(); offset != 0 && freeblocks_.visit(offset);) {
        if (cancelled_.stop_requested() || offset >= page.bytes.size()) return;
        const auto freeblock = SQLiteUtils::FreeblockData(page.bytes, offset);
        if (!freeblock) return;
        if (freeblock->size() > searchable) {
            leftOut_ = true;
            return;
        }
        searchable -= freeblock->size();
        const Region region{*freeblock,  page.fileOffset + offset,
                            page.number, CarvedSpace::Freeblock,
                            kStart,      processOffset};
        if (loop_.ParseHeaderAndData(region) == RegionEnd::ReadFailed) return;
        // From the page: the size of a freeblock may be too small for its own header.
        offset = SQLiteUtils::NextFreeblockOffset(page.bytes, offset).value_or(0);
    }
}

}  // namespace salvor
