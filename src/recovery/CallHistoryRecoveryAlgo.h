#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "live/DAOs.h"
#include "records/CallLog.h"
#include "records/CallLogRecord.h"
#include "scan/ScanState.h"
#include "util/Bytes.h"
#include "util/MappedFile.h"

namespace salvor {

/// One row of the newer call table as the stand-alone scanner reads it: per column of
/// `CallLogRecord::ZCALLRECORDSchema` its value as text, absent when it has none.
struct ScannedCall {
    std::array<Text, 17> values;
    std::int64_t payloadLength = 0;  ///< as it stands in front of the row id; nothing relies on it
    const Text& value(std::string_view column) const;
};

/// Stand-alone byte scanner of CallHistory.storedata that needs no table signatures: it looks for
/// record headers of 18 bytes and reads the columns behind them. Several of its readings deviate
/// from the SQLite format, as its lines tell. No scan runs it.
class CallHistoryRecoveryAlgo {
  public:
    /// Replaces the scan's deleted calls by an empty list.
    explicit CallHistoryRecoveryAlgo(ScanState& state);

    /// Maps the store of the scanned backup; without one there is nothing to read.
    void getBufferFromHaxFile();
    /// Walks the store and lists every row that is no longer live as a deleted call.
    void fetchCallHistoryFrom_ZCALLRECORD_Table();

    /// The row whose header begins at `offset`, with its row id in the first column; nothing when
    /// it runs past the end.
    static std::optional<ScannedCall> scanRecord(Bytes store, std::size_t offset);
    static std::shared_ptr<CallLog> toCallLog(const ScannedCall& call);

  private:
    ScanState& state_;
    DAOs daos_;
    std::optional<MappedFile> file_;
};

/// Byte readers of the scanner.
struct CommanFunctions {
    /// A two-byte variable-length integer: (first AND 127) x 128 + second.
    static std::int64_t GetRowID(std::uint8_t first, std::uint8_t second);
    /// A big-endian unsigned integer of up to 8 bytes.
    static std::int64_t ParseIntegerValueFromBytes(Bytes bytes);
};

}  // namespace salvor
