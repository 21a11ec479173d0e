#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>

#include "carving/RecordLoop.h"
#include "carving/format/FreeblockChain.h"
#include "carving/format/SQLiteHeader.h"
#include "util/MappedFile.h"

namespace salvor {

/// What of a b-tree page is searched.
enum class PageSearch : std::uint8_t {
    Unused,  ///< the space that SQLite no longer uses: the gap and the freeblocks
    Whole,   ///< every byte of every page whatever its type, so live rows are carved as well
};

struct CarvingOptions {
    bool callList = false;  ///< read freeblocks unshifted
    /// Told by how many bytes a pass went on; passes may cover bytes twice.
    std::function<void(std::uint64_t)> advanced;
};

/// Carves the rows of one table out of the raw bytes of a SQLite database file: walks it page by
/// page with its own readers, finds byte positions that fit a table pattern, decodes the record
/// behind each and hands it to the receiver. Knows neither SQL nor what a row means; whether it is
/// really deleted is the receiver's business. One object per table of one file; not thread-safe.
class CarvingEngine {
  public:
    CarvingEngine(RowReceiver& receiver, PageSearch search, std::stop_token cancelled = {})
        : search_(search), cancelled_(std::move(cancelled)), loop_(receiver, cancelled_) {}

    /// The file at `path`; nothing when it is missing or too small to be carved.
    static std::optional<MappedFile> open(const std::filesystem::path& path);

    void carve(Bytes file, const TablePatterns& patterns, CarvingOptions options = {});
    /// Whether freeblocks were left out because those of a page overlap too often.
    bool leftOut() const { return leftOut_; }
    /// Carves the records of one region.
    RegionEnd ParseHeaderAndData(const TablePatterns& patterns, const Region& region) {
        loop_.use(patterns);
        return loop_.ParseHeaderAndData(region);
    }

  private:
    struct Page {
        Bytes bytes;
        std::uint64_t fileOffset;
        std::uint64_t number;
    };

    void runPasses(const SQLiteHeader& header);
    void ProcessNonAutoVacuumSqliteDatabase(const SQLiteHeader& header);
    void ProcessAutoVacuumSqliteDatabase(const SQLiteHeader& header);
    void ProcessPagesAfterHighestNumberedRootPage(const SQLiteHeader& header);
    void ProcessFreeListTrunkPage(const SQLiteHeader& header);
    void walkPages(std::int32_t lastPage, bool pointerMaps);
    void searchBlocks(std::uint64_t firstPage, bool shortBlocks, CarvedSpace space);
    void ProcessSQLitePage(const Page& page);
    void searchUnused(const Page& page);
    void searchFreeblocks(const Page& page);
    void advanced(std::uint64_t bytes) const {
        if (options_.advanced) options_.advanced(bytes);
    }

    PageSearch search_;
    std::stop_token cancelled_;
    RecordLoop loop_;
    CarvingOptions options_;
    Bytes file_;
    std::uint64_t pageSize_ = 0;
    FreeblockChain freeblocks_;
    bool leftOut_ = false;
};

}  // namespace salvor
