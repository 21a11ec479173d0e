// The record loop: one header after the other, its columns, the correction of the data start.
#include <algorithm>
#include <functional>

#include "carving/AbstractSqLiteRecovery.h"
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

// Where `part` begins inside `whole`, or 0 when it is no part of it.
std::uint64_t offsetWithin(Bytes whole, Bytes part) {
    const std::less<const std::uint8_t*> before;
    const auto* begin = whole.data();
    if (whole.empty() || before(part.data(), begin) || !before(part.data(), begin + whole.size())) {
        return 0;
    }
    return static_cast<std::uint64_t>(part.data() - begin);
}

}  // namespace

RegionEnd AbstractSqLiteRecovery::ParseHeaderAndData(Bytes data, std::int64_t start) {
    if (data.size() < kSmallestRegion || cancelled_.stop_requested()) return RegionEnd::Done;
    _dontAttemptAgain = false;
    matcher_.use(tablePatterns);
    matcher_.begin(data);
    loopStates_.begin();
    const auto end = static_cast<std::int64_t>(data.size()) - 1;
    bool secondReading = false;
    for (std::int64_t offset = start; offset < end;) {
        if (cancelled_.stop_requested()) break;
        if (!loopStates_.enter(offset, _dataOffset, _dataReposition, _dontAttemptAgain)) break;
        const MatchResult match = matcher_.find(offset, info_);
        if (match == MatchResult::ReadFailed) return RegionEnd::ReadFailed;
        if (match == MatchResult::None) break;
        beginRecord(data);
        const std::int64_t dataStart = info_.DataStartIndex() + _processOffset + _dataOffset;
        std::int64_t consumed = 0;
        const Reading reading = readRecord(data, dataStart, secondReading, consumed);
        if (reading == Reading::ReadFailed) return RegionEnd::ReadFailed;
        secondReading = reading == Reading::Again;
        if (_dataReposition) continue;
        offset = dataStart + consumed;
        if (!isAlreadyOnList(*_recObject)) addRecoveredObject();
    }
    return RegionEnd::Done;
}

void AbstractSqLiteRecovery::beginRecord(Bytes data) {
    _recObject = GetNewRecoveryObject();
    _recObject->RowId = info_.RowId == 0 ? 1 : info_.RowId;
    const std::uint64_t base = offsetWithin(file_, data);
    RecordOrigin origin;
    origin.database = originDatabase;
    // After a correction backwards a header may begin in front of its region.
    const std::int64_t offset = static_cast<std::int64_t>(base) + info_.HeaderStartIndex;
    origin.offset = static_cast<std::uint64_t>(std::max<std::int64_t>(offset, 0));
    origin.page = pageSize_ == 0 ? 0 : static_cast<std::uint32_t>(base / pageSize_ + 1);
    origin.space = space_;
    _recObject->Origin = std::move(origin);
}

AbstractSqLiteRecovery::Reading AbstractSqLiteRecovery::readRecord(Bytes data,
                                                                   std::int64_t dataStart,
                                                                   bool secondReading,
                                                                   std::int64_t& consumed) {
    for (std::size_t i = 0; i < info_.Header.size(); ++i) {
        const auto column = static_cast<std::int64_t>(i);
        const std::int64_t serialType = info_.Header[i][0];
        const std::int64_t begin = dataStart + consumed;
        const std::int64_t length = textLength(serialType);
        if (length < 0) {
            const DecodedColumn decoded = decodeColumn(data, begin, serialType);
            consumed += decoded.consumed;
            if (decoded.read) FillModel(column, decoded.value, *info_.tablePattern);
            continue;
        }
        // Unlike other columns a text that begins before the data is a read past its bounds.
        if (begin < 0) return Reading::ReadFailed;
        consumed = grow(consumed, length);
        _currentDataValue =
            slice(data, static_cast<std::size_t>(begin), static_cast<std::size_t>(length));
        FillModel(column, decodeText(_currentDataValue), *info_.tablePattern);
        if (textAsksForReread(liesInside(data, begin, length), secondReading)) {
            _recObject = nullptr;
            return Reading::Again;
        }
    }
    return Reading::Complete;
}

// Whether the text column just read wants the record read anew from a corrected data start. A
// record is read twice at most: what a second reading asks for is not granted.
bool AbstractSqLiteRecovery::textAsksForReread(bool wholeText, bool secondReading) {
    if (_dontAttemptAgain) {
        _dataReposition = false;
        _dontAttemptAgain = false;
        _dataOffset = 0;
        return false;
    }
    const std::int32_t correction = verifyDataPosition(_currentDataValue);
    if (correction == kNoCorrection) return false;
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
