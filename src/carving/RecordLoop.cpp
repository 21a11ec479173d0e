// The record loop: one header after the other, its columns, the correction of the data start.
#include "carving/RecordLoop.h"

#include <algorithm>

#include "carving/ColumnDecoder.h"

namespace salvor {
namespace {

// Regions hold 15 bytes or fewer for nothing.
constexpr std::size_t kSmallestRegion = 16;
constexpr std::int32_t kLargestCorrection = 6;

// Declared lengths reach 2^62; beyond any region they are all the same.
std::int64_t grow(std::int64_t consumed, std::int64_t length) {
    constexpr std::int64_t kFar = std::int64_t{1} << 40;
    return length >= kFar - consumed ? kFar : consumed + length;
}

}  // namespace

RegionEnd RecordLoop::ParseHeaderAndData(const Region& region) {
    const Bytes data = region.data;
    if (data.size() < kSmallestRegion || cancelled_.stop_requested()) return RegionEnd::Done;
    _dontAttemptAgain = false;
    matcher_.begin(data);
    loopStates_.begin();
    const auto end = static_cast<std::int64_t>(data.size()) - 1;
    bool secondReading = false;
    for (std::int64_t offset = region.start; offset < end;) {
        if (cancelled_.stop_requested()) break;
        if (!loopStates_.enter(offset, _dataOffset, _dataReposition, _dontAttemptAgain)) break;
        const MatchResult match = matcher_.find(offset, info_);
        if (match == MatchResult::ReadFailed) return RegionEnd::ReadFailed;
        if (match == MatchResult::None) break;
        beginRecord(region);
        const std::int64_t dataStart = info_.DataStartIndex() + region.processOffset + _dataOffset;
        std::int64_t consumed = 0;
        const Reading reading = readRecord(data, dataStart, secondReading, consumed);
        if (reading == Reading::ReadFailed) return RegionEnd::ReadFailed;
        secondReading = reading == Reading::Again;
        if (_dataReposition) continue;
        offset = dataStart + consumed;
        receiver_.rowEnds();
    }
    return RegionEnd::Done;
}

void RecordLoop::beginRecord(const Region& region) {
    RecordOrigin origin;
    // After a correction backwards a header may begin in front of its region.
    const std::int64_t offset =
        static_cast<std::int64_t>(region.fileOffset) + info_.HeaderStartIndex;
    origin.offset = static_cast<std::uint64_t>(std::max<std::int64_t>(offset, 0));
    origin.page = static_cast<std::uint32_t>(region.page);
    origin.space = region.space;
    // Kept: no-row-id-is-one.
    receiver_.rowBegins(info_.RowId == 0 ? 1 : info_.RowId, origin);
}

RecordLoop::Reading RecordLoop::readRecord(Bytes data, std::int64_t dataStart, bool secondReading,
                                           std::int64_t& consumed) {
    for (std::size_t i = 0; i < info_.Header.size(); ++i) {
        const auto column = static_cast<std::int64_t>(i);
        const std::int64_t serialType = info_.Header[i][0];
        const std::int64_t begin = dataStart + consumed;
        const std::int64_t length = textLength(serialType);
        if (length < 0) {
            const DecodedColumn decoded = decodeColumn(data, begin, serialType);
            consumed += decoded.consumed;
            if (decoded.read) receiver_.columnRead(column, decoded.value, *info_.tablePattern);
            continue;
        }
        // Unlike other columns a text that begins before the data is a read past its bounds.
        if (begin < 0) return Reading::ReadFailed;
        consumed = grow(consumed, length);
        const Bytes text =
            slice(data, static_cast<std::size_t>(begin), static_cast<std::size_t>(length));
        receiver_.columnRead(column, decodeText(text), *info_.tablePattern);
        if (textAsksForReread(text, liesInside(data, begin, length), secondReading)) {
            receiver_.rowDropped();
            return Reading::Again;
        }
    }
    return Reading::Complete;
}

// Whether the text column just read wants the record read anew from a corrected data start. A
// record is read twice at most: what a second reading asks for is not granted.
bool RecordLoop::textAsksForReread(Bytes text, bool wholeText, bool secondReading) {
    if (_dontAttemptAgain) {
        _dataReposition = false;
        _dontAttemptAgain = false;
        _dataOffset = 0;
        return false;
    }
    const std::int32_t correction = receiver_.correctionFor(text);
    if (correction == RowReceiver::kNoCorrection) return false;
    const bool applicable =
        correction != 0 && correction >= -kLargestCorrection && correction <= kLargestCorrection;
    if (applicable && !_dataReposition && !secondReading) {
        _dataReposition = true;
        if (wholeText) _dontAttemptAgain = true;
        _dataOffset = correction;
        return true;
    }
    if (correction == 0 || !_dataReposition) {
        _dontAttemptAgain = false;
        _dataReposition = false;
    } else {
        _dontAttemptAgain = true;
        _dataReposition = false;
        _dataOffset = 0;
    }
    return false;
}

}  // namespace salvor
