#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "carving/CarvingEngine.h"
#include "carving/signatures/SqLiteTableSignatures.h"
#include "records/List.h"
#include "records/baseRecoveryObject.h"
#include "recovery/RowIdIndex.h"
#include "scan/ScanState.h"

namespace salvor {

/// Base class of every carver of deleted records: receives the columns that the engine finds in a
/// database file under `tablePatterns` and hands them to the subclass, which turns them into
/// record objects and decides what is really deleted. Of rows with one row id it passes on the
/// first that it finds. One object per database table of one scan; not thread-safe.
class AbstractSqLiteRecovery : private RowReceiver {
  public:
    explicit AbstractSqLiteRecovery(ScanState& state, std::stop_token cancelled = {},
                                    PageSearch search = PageSearch::Unused);
    ~AbstractSqLiteRecovery() override;

    TablePatterns tablePatterns;
    List<baseRecoveryObject> RecoveredData;      ///< row-id de-duplication looks here
    List<baseRecoveryObject> RecoveredFiltered;  ///< what passed the subclass's own filters
    std::string fullDBPath;
    Text originDatabase;  ///< `database` of the origins; absent: the file's name

    /// Carves the file at `path`. A missing, empty or tiny file yields nothing. The scan's
    /// `fileOutcomes` learn whether it could be searched.
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

    // From here on what no scan calls.
    /// The records of `RecoveredFiltered` with the row id of `record`.
    List<baseRecoveryObject> FindAll(const baseRecoveryObject& record) const;
    /// The first header at or behind `offset` that fits a pattern (`Valid`), or one that is not
    /// `Valid`; nothing when a read past the end of `data` ended the search.
    virtual std::optional<SQLiteTableHeaderInfo> FindSQLiteTableHeader(Bytes data,
                                                                       std::int64_t offset) const;
    /// Carves the records of one region, searching from `start` on.
    RegionEnd ParseHeaderAndData(Bytes data, std::int64_t start);
    /// Whether a header begins before `offset` + `size`; `found` is the distance to it, `size` at
    /// most.
    bool processContent(std::int64_t size, std::int64_t& found, std::int64_t offset,
                        Bytes data) const;
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
    /// The header bytes that a pattern lets expect: a byte or two for each column. Kept:
    /// column-without-codes.
    static std::int32_t headerSize(const HeaderPattern& header);
    static std::int32_t experimentalHeaderParsing(Bytes, std::int32_t, Bytes) { return 0; }
    static std::string ConnectionStringForSQLiteConnection(const std::string& path);
    static void logPageType(std::uint8_t) {}
    /// No network connection is ever opened, so the answer is no.
    static bool connected() { return false; }
    bool checkIfUICancelled() const { return cancelled_.stop_requested(); }

  protected:
    /// Whether a pass may still keep what takes as much memory as so many records; takes it.
    bool takeRows(std::uint64_t count);
    /// How the search of the file at `fullDBPath` ended.
    void tellSearch(const ReadingEnd& end);

    // Hooks of the subclass.
    /// Column `column` of the matched pattern has this value (absent: it does not decode).
    virtual void FillModel(std::int64_t column, const OptionalColumnValue& value,
                           const TablePattern& pattern);
    virtual std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject();
    /// Called once per record whose row id is not yet in `RecoveredData`.
    virtual void addRecoveredObject();
    using RowReceiver::kNoCorrection;
    /// The data-start correction that the bytes of a text column ask for, or `kNoCorrection`.
    virtual std::int32_t verifyDataPosition(Bytes text);
    virtual std::int32_t setRecoveryCount(std::int32_t count);
    virtual std::int32_t incrementRecoveryCount();

    /// `FindSQLiteTableHeader` with these patterns.
    static std::optional<SQLiteTableHeaderInfo> findHeader(const TablePatterns& patterns,
                                                           Bytes data, std::int64_t offset);

    ScanState& state_;
    std::stop_token cancelled_;
    std::shared_ptr<baseRecoveryObject> _recObject;  ///< the record being filled; `Origin` is set
    bool _hasRecoveredCurrentObject = false;
    std::string_view _field;  ///< name of the record field filled last, from its pattern

  private:
    void rowBegins(std::int64_t rowId, const RecordOrigin& origin) final;
    void columnRead(std::int64_t number, const OptionalColumnValue& value,
                    const TablePattern& pattern) final;
    std::int32_t correctionFor(Bytes text) final;
    void rowDropped() final;
    void rowEnds() final;

    ReadingEnd searchEnd() const;

    CarvingEngine engine_;
    std::uint64_t rowsLeft_ = UINT64_MAX;  ///< that may still be added
    bool rowsLeftOut_ = false;
    const bool keepsRows_;
    bool workingOnCallList_ = false;
    mutable RowIdIndex rowIds_;
};

}  // namespace salvor
