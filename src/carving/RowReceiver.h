#pragma once

#include <cstdint>

#include "carving/signatures/TablePattern.h"
#include "records/ColumnValue.h"
#include "records/RecordOrigin.h"
#include "util/Bytes.h"

namespace salvor {

/// Whom the engine hands the rows that it carves. A row begins, its columns are told one by one,
/// and it ends. One that is dropped, or never ends before the next begins, is void: it is read
/// anew from another place, or a read past the end cut it off. Called on the thread that carves.
class RowReceiver {
  public:
    static constexpr std::int32_t kNoCorrection = -100;

    RowReceiver() = default;
    RowReceiver(const RowReceiver&) = delete;
    RowReceiver& operator=(const RowReceiver&) = delete;
    virtual ~RowReceiver() = default;

    /// The origin's database is the receiver's to fill in: the engine knows bytes alone.
    virtual void rowBegins(std::int64_t rowId, const RecordOrigin& origin) = 0;
    /// Column `number` of the pattern has this value (absent: it does not decode).
    virtual void columnRead(std::int64_t number, const OptionalColumnValue& value,
                            const TablePattern& pattern) = 0;
    /// By how many bytes the row's data begin elsewhere, as the bytes of the text column read last
    /// tell, or `kNoCorrection`.
    virtual std::int32_t correctionFor(Bytes text) = 0;
    virtual void rowDropped() = 0;
    virtual void rowEnds() = 0;
};

}  // namespace salvor
