#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "carving/CarvingProgress.h"
#include "carving/RecordLoopStates.h"
#include "carving/RowIdIndex.h"
#include "carving/format/FreeblockChain.h"
#include "carving/format/SQLiteHeader.h"
#include "carving/search/PatternMatcher.h"
#include "carving/search/SQLiteTableHeaderInfo.h"
#include "carving/signatures/SqLiteTableSignatures.h"
#include "records/ColumnValue.h"
#include "records/List.h"
#include "records/baseRecoveryObject.h"
#include "scan/ScanState.h"
#include "util/Bytes.h"

namespace salvor {

/// How the search of a region ended.
enum class RegionEnd : std::uint8_t {
    Done,        ///< nothing more fits, or the search was cancelled
    ReadFailed,  ///< a read past the end of the region; ends the page or pass around it as well
};

/// Base class of every carver of deleted records. Walks a SQLite database file page by page with
/// its own readers, finds byte positions that fit one of its table patterns, decodes the record
/// behind each and hands every column to the subclass, which turns them into a record object.
/// It looks only at space that SQLite no longer uses; the subclass decides what is really deleted.
/// One object per database table of one scan; not thread-safe.
class AbstractSqLiteRecovery {
  public:
    explicit AbstractSqLiteRecovery(ScanState& state, std::stop_token cancelled = {});
    AbstractSqLiteRecovery(const AbstractSqLiteRecovery&) = delete;
    AbstractSqLiteRecovery& operator=(const AbstractSqLiteRecovery&) = delete;
    virtual ~AbstractSqLiteRecovery();

    TablePatterns tablePatterns;
    List<baseRecoveryObject> RecoveredData;      ///< row-id de-duplication looks here
    List<baseRecoveryObject> RecoveredFiltered;  ///< what passed the subclass's own filters
    std::string fullDBPath;
    std::string originDatabase;  ///< `database` of the origins; empty: the file's name

    /// Carves the file at `path`. A missing, empty or tiny file yields nothing.
    virtual void DoRecoveryPath(const std::filesystem::path& path);

    /// The call-history service's own carvers read freeblocks unshifted; captured here, so that
    /// whatever runs beside them does not see it.
    void setWorkingOnCallList(bool value) { workingOnCallList_ = value; }

    /// The largest row id ever handed out for `table` in the database at `fullDBPath`, -1 when
    /// that cannot be told.
    std::int32_t getMaxRowIdforTable(const std::string& table);
    /// Whether `RecoveredData` holds this record or one with its row id. The row id of an entry
    /// must not change once it is on the list.
    bool isAlreadyOnList(const baseRecoveryObject& record) const;
    /// The records of `RecoveredFiltered` with the row id of `record`.
    List<baseRecoveryObject> FindAll(const baseRecoveryObject& record) const;

    /// The first header at or behind `offset` that fits a pattern (`Valid`), or one that is not
    /// `Valid`; nothing when a read past the end of `data` ended the search.
    std::optional<SQLiteTableHeaderInfo> FindSQLiteTableHeader(Bytes data, std::int64_t offset);
    /// Carves the records of one region, searching from `start` on.
    RegionEnd ParseHeaderAndData(Bytes data, std::int64_t start);

    // Small operations on bytes and values.
    static std::optional<std::uint16_t> convertToint16fromData(Bytes data, std::size_t location);
    static bool IsGuidAscii(std::uint8_t byte);
    static bool IsChatGuidAsciiValue(std::uint8_t byte);
    /// Whether the first 36 bytes are the text of a UUID; letters need not be hexadecimal.
    static bool IsGuidAsciiValue(Bytes data);
    /// Where from `offset` on the text of a UUID begins, or -1.
    static std::int64_t FindIndexOfBytesForGuidDataContent(Bytes data, std::int64_t offset);
    /// A text as it is, a number as its decimal text.
    static std::string getStringFromValue(const ColumnValue& value);
    static std::optional<std::uint8_t> firstByte(Bytes data);
    /// The header bytes that a pattern lets expect. A column without codes counts as much as the
    /// one before it: deliberate.
    static std::int32_t headerSize(const HeaderPattern& header);
    static std::int32_t experimentalHeaderParsing(Bytes header, std::int32_t skip, Bytes data);
    /// Whether a header begins before `offset` + `size`; `found` is the distance to it, `size` at
    /// most.
    bool processContent(std::int64_t size, std::int64_t& found, std::int64_t offset, Bytes data);
    static std::string ConnectionStringForSQLiteConnection(const std::string& path);
    static void logPageType(std::uint8_t) {}
    /// No network connection is ever opened, so the answer is no.
    static bool connected() { return false; }
    bool checkIfUICancelled() const { return cancelled_.stop_requested(); }

  protected:
    // Hooks of the subclass.
    /// Column `column` of the matched pattern has this value (absent: it does not decode).
    virtual void FillModel(std::int64_t column, const OptionalColumnValue& value,
                           const TablePattern& pattern);
    virtual std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject();
    /// Called once per record whose row id is not yet in `RecoveredData`.
    virtual void addRecoveredObject();
    static constexpr std::int32_t kNoCorrection = -100;
    /// The data-start correction that the bytes of a text column ask for, or `kNoCorrection`.
    virtual std::int32_t verifyDataPosition(Bytes text);
    virtual std::int32_t setRecoveryCount(std::int32_t count);
    virtual std::int32_t incrementRecoveryCount();
    /// One page of a b-tree pass; the full-search engine searches it whole instead.
    virtual void ProcessSQLitePage(Bytes page);

    // The passes over the mapped file.
    void ProcessNonAutoVacuumSqliteDatabase(const SQLiteHeader& header);
    void ProcessAutoVacuumSqliteDatabase(const SQLiteHeader& header);
    void ProcessPagesAfterHighestNumberedRootPage(const SQLiteHeader& header);
    void ProcessFreeListTrunkPage(const SQLiteHeader& header);

    ScanState& state_;
    std::stop_token cancelled_;
    std::shared_ptr<baseRecoveryObject> _recObject;  ///< the record being filled; `Origin` is set
    bool _hasRecoveredCurrentObject = false;
    Text _field;  ///< name of the record field filled last
    bool workingOnCallList_ = false;

    /// In place of a record on `RecoveredData`, for carvers that keep none: its row id alone.
    void rememberRowId(std::int64_t rowId) { rowIds_.remember(rowId); }

    // State of the record loop.
    std::int32_t _processOffset = 0;  ///< extra shift of the data start, 1 inside freeblocks
    std::int32_t _dataOffset = 0;     ///< data-start correction in force
    bool _dataReposition = false;     ///< a correction is pending, the record is being re-read
    bool _dontAttemptAgain = false;   ///< the correction was applied once
    Bytes _currentDataValue;          ///< bytes of the text column read last
    std::int64_t _currentEndian = 0;  ///< never anything else: fields are always big-endian
    CarvedSpace space_ = CarvedSpace::Gap;

  private:
    enum class Reading : std::uint8_t { Complete, Again, ReadFailed };
    Reading readRecord(Bytes data, std::int64_t dataStart, bool secondReading,
                       std::int64_t& consumed);
    bool textAsksForReread(bool wholeText, bool secondReading);
    void beginRecord(Bytes data);
    RegionEnd searchFreeblock(Bytes freeblock);
    void walkPages(std::int32_t lastPage, bool pointerMaps);
    void searchBlocks(std::uint64_t firstPage, std::uint64_t blocks, bool shortBlocks,
                      CarvedSpace space);
    void runPasses(const SQLiteHeader& header);

    Bytes file_;
    std::uint64_t pageSize_ = 0;
    std::optional<CarvingProgress> progress_;
    PatternMatcher matcher_;
    SQLiteTableHeaderInfo info_;
    RecordLoopStates loopStates_;
    FreeblockChain freeblocks_;
    mutable RowIdIndex rowIds_;
};

}  // namespace salvor
