// The walk over the file: which pages are looked at, and which bytes of a page are searched.
#include "carving/AbstractSqLiteRecovery.h"
#include "carving/format/PointerMapPage.h"
#include "carving/format/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::uint8_t kInteriorTable = 5;
constexpr std::uint8_t kLeafIndex = 10;
constexpr std::uint8_t kLeafTable = 13;

// Interior index pages (2) are deliberately not among them.
bool isSearchedPageType(std::uint8_t type) {
    return type == kInteriorTable || type == kLeafIndex || type == kLeafTable;
}

}  // namespace

void AbstractSqLiteRecovery::ProcessNonAutoVacuumSqliteDatabase(const SQLiteHeader& header) {
    walkPages(header.NumberOfPages, false);
}

void AbstractSqLiteRecovery::ProcessAutoVacuumSqliteDatabase(const SQLiteHeader& header) {
    walkPages(header.HighestNUmberedRootPageNumber, true);
}

void AbstractSqLiteRecovery::walkPages(std::int32_t lastPage, bool pointerMaps) {
    // Page 2 is deliberately left out in databases without pointer maps, too.
    const std::int64_t firstSearched = pointerMaps ? 2 : 3;
    std::uint64_t position = 0;
    std::int64_t nextPointerMap = 2;
    std::int64_t pointerMapPages = 0;
    for (std::int64_t page = 1; page <= lastPage && file_.size() - position >= pageSize_;
         ++page, position += pageSize_) {
        if (cancelled_.stop_requested()) return;
        const Bytes bytes = file_.subspan(position, pageSize_);
        if (progress_) progress_->advance(pageSize_);
        if (pointerMaps && (page == 2 || page == nextPointerMap)) {
            const auto map = PointerMapPage::read(static_cast<std::int32_t>(page), bytes);
            ++pointerMapPages;
            // The place of the third and later pointer-map pages is deliberately computed this
            // way, though SQLite puts them elsewhere.
            if (map.full) {
                nextPointerMap = static_cast<std::int64_t>(pageSize_ / 5) + 2 + pointerMapPages;
            }
        } else if (page >= firstSearched) {
            ProcessSQLitePage(bytes);
        }
    }
}

void AbstractSqLiteRecovery::ProcessPagesAfterHighestNumberedRootPage(const SQLiteHeader& header) {
    searchBlocks(static_cast<std::uint64_t>(header.HighestNUmberedRootPageNumber),
                 file_.size() / pageSize_, false, CarvedSpace::AfterRoot);
}

void AbstractSqLiteRecovery::ProcessFreeListTrunkPage(const SQLiteHeader& header) {
    // Deliberate: the trunk chain is not followed, everything from its first page on is searched.
    // As many blocks as the whole file has pages: the last ones lie behind its end, so that a
    // short block at the end is reached unless the first trunk page is page 1.
    searchBlocks(static_cast<std::uint64_t>(header.PageNumberOfFirstListTrunkPage) - 1,
                 file_.size() / pageSize_, true, CarvedSpace::FreeList);
}

void AbstractSqLiteRecovery::searchBlocks(std::uint64_t firstPage, std::uint64_t blocks,
                                          bool shortBlocks, CarvedSpace space) {
    space_ = space;
    std::uint64_t position = firstPage * pageSize_;
    for (; blocks > 0 && position < file_.size(); --blocks, position += pageSize_) {
        if (cancelled_.stop_requested()) return;
        const Bytes block = slice(file_, position, pageSize_);
        if (block.size() < pageSize_ && !shortBlocks) return;
        if (progress_) progress_->advance(block.size());
        if (ParseHeaderAndData(block, 0) == RegionEnd::ReadFailed) return;
    }
}

void AbstractSqLiteRecovery::ProcessSQLitePage(Bytes page) {
    if (page.empty() || cancelled_.stop_requested() || !isSearchedPageType(page[0])) return;
    const auto cells = SQLiteUtils::convertToint16fromData(page, 3);
    const auto storedStart = SQLiteUtils::convertToint16fromData(page, 5);
    if (!cells || !storedStart) return;
    const std::size_t contentStart = *storedStart == 0 ? 65536 : *storedStart;
    // Deliberate: on leaf pages the cell pointers end 8 bytes earlier.
    const std::size_t gapStart = (std::size_t{*cells} + 8) * 2;
    if (contentStart <= gapStart || contentStart > page.size()) return;
    space_ = CarvedSpace::Gap;
    const Bytes gap = page.subspan(gapStart, contentStart - gapStart);
    if (ParseHeaderAndData(gap, 0) == RegionEnd::ReadFailed) return;

    const auto first = SQLiteUtils::NextFreeblockOffset(page, 1);
    std::uint16_t offset = first.value_or(0);
    if (offset == 0) return;
    for (freeblocks_.begin(); offset != 0 && freeblocks_.visit(offset);) {
        if (cancelled_.stop_requested() || offset >= page.size()) return;
        const auto freeblock = SQLiteUtils::FreeblockData(page, offset);
        if (!freeblock || searchFreeblock(*freeblock) == RegionEnd::ReadFailed) return;
        const auto next = SQLiteUtils::NextFreeblockOffset(*freeblock, 0);
        if (!next) return;
        offset = *next;
    }
}

RegionEnd AbstractSqLiteRecovery::searchFreeblock(Bytes freeblock) {
    // Freeblocks are read one byte later than other space, except for the call list. The size
    // field's last byte is the first that the search looks at: both deliberate.
    constexpr std::int64_t kStart = 3;
    space_ = CarvedSpace::Freeblock;
    _processOffset = workingOnCallList_ ? 0 : 1;
    const RegionEnd end = ParseHeaderAndData(freeblock, kStart);
    _processOffset = 0;
    return end;
}

}  // namespace salvor
