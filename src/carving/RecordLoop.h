#pragma once

#include <cstdint>
#include <stop_token>

#include "carving/RecordLoopStates.h"
#include "carving/RowReceiver.h"
#include "carving/search/PatternMatcher.h"

namespace salvor {

/// How the search of a region ended.
enum class RegionEnd : std::uint8_t {
    Done,        ///< nothing more fits, or the search was cancelled
    ReadFailed,  ///< a read past the end of the region; ends the page or pass around it as well
};

/// Bytes that are searched for records, and where they lie in their file.
struct Region {
    Bytes data;
    std::uint64_t fileOffset = 0;
    std::uint64_t page = 0;  ///< from 1
    CarvedSpace space = CarvedSpace::Gap;
    std::int64_t start = 0;          ///< the search begins here
    std::int32_t processOffset = 0;  ///< extra shift of the data start, 1 inside freeblocks
};

/// Finds the headers of a region one after the other and decodes the record behind each for the
/// receiver. Kept: correction-outlives-region. Not thread-safe.
class RecordLoop {
  public:
    RecordLoop(RowReceiver& receiver, std::stop_token cancelled)
        : receiver_(receiver), cancelled_(std::move(cancelled)) {}

    void use(const TablePatterns& patterns) { matcher_.use(patterns); }
    RegionEnd ParseHeaderAndData(const Region& region);

  private:
    enum class Reading : std::uint8_t { Complete, Again, ReadFailed };

    void beginRecord(const Region& region);
    Reading readRecord(Bytes data, std::int64_t dataStart, bool secondReading,
                       std::int64_t& consumed);
    bool textAsksForReread(Bytes text, bool wholeText, bool secondReading);

    RowReceiver& receiver_;
    std::stop_token cancelled_;
    PatternMatcher matcher_;
    SQLiteTableHeaderInfo info_;
    RecordLoopStates loopStates_;
    std::int32_t _dataOffset = 0;    ///< data-start correction in force
    bool _dataReposition = false;    ///< a correction is pending, the record is being re-read
    bool _dontAttemptAgain = false;  ///< the correction was applied once
};

}  // namespace salvor
