#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>
#include <unordered_set>

#include "app/state/ScanState.h"
#include "carving/SqLiteTableSignatures.h"
#include "records/ColumnValue.h"
#include "records/List.h"
#include "records/baseRecoveryObject.h"
#include "util/Bytes.h"

namespace salvor {

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

    /// Carves the file at `path`. A missing, empty or tiny file yields nothing.
    virtual void DoRecoveryPath(const std::filesystem::path& path);

    /// The call-history service's own carvers read freeblocks unshifted; captured here, so that
    /// whatever runs beside them does not see it.
    void setWorkingOnCallList(bool value) { workingOnCallList_ = value; }

    /// The largest row id ever handed out for `table` in the database at `fullDBPath`, -1 when
    /// that cannot be told.
    std::int32_t getMaxRowIdforTable(const std::string& table);
    bool isAlreadyOnList(const baseRecoveryObject& record) const;

    // (the engine's further operations follow with its implementation)

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

    ScanState& state_;
    std::stop_token cancelled_;
    std::shared_ptr<baseRecoveryObject> _recObject;  ///< the record being filled; `Origin` is set
    bool _hasRecoveredCurrentObject = false;
    Text _field;  ///< name of the record field filled last
    bool workingOnCallList_ = false;
};

}  // namespace salvor
