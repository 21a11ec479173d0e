#include <algorithm>
#include <bit>
#include <set>
#include <tuple>

#include "plain_record_loop.h"

namespace salvor::reference {
namespace {

constexpr std::int64_t kNoOpinion = -100;
/// Further than any file reaches; sums of two stay in range.
constexpr std::int64_t kFar = std::int64_t{1} << 61;

bool isInside(const Buffer& data, std::int64_t offset, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(data.size());
    return offset >= 0 && offset <= size && length <= size - offset;
}

std::string asString(const Buffer& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace

PlainRecordLoop::PlainRecordLoop(const std::vector<PlainPattern>& patterns,
                                 const PlainOptions& options, Events& events)
    : matcher_(patterns, events), options_(options), events_(events) {}

void PlainRecordLoop::parse(const Region& region, std::int64_t start) {
    const auto length = static_cast<std::int64_t>(region.data.size());
    if (length <= 15) {
        events_.count(Event::TinyRegion);
        return;
    }
    dontAttemptAgain_ = false;
    if (dataReposition_) events_.count(Event::PendingFromEarlierRegion);
    secondReading_ = false;
    std::set<std::tuple<std::int64_t, bool, bool, std::int64_t>> states;
    std::int64_t offset = start;
    while (offset < length - 1) {
        if (!states.emplace(offset, dataReposition_, dontAttemptAgain_, dataOffset_).second) {
            events_.count(Event::RepeatedState);
            return;
        }
        const MatchedHeader header = matcher_.find(region.data, offset);
        if (!header.valid) return;
        readRecord(region, header);
        if (secondReading_ && dataReposition_) events_.count(Event::PendingAfterReread);
        secondReading_ = correctionApplied_;
        if (dataReposition_) continue;
        const std::int64_t next = dataStart_ + consumed_;
        if (next <= offset) events_.count(Event::SearchGoesBack);
        offset = next;
        handOn(region, header);
    }
}

void PlainRecordLoop::readRecord(const Region& region, const MatchedHeader& header) {
    if (header.rowId == 0) events_.count(Event::RowIdZero);
    if (header.rowId < 0) events_.count(Event::RowIdNegative);
    if (dataOffset_ != 0 && !secondReading_) events_.count(Event::CorrectionStaysForLaterRecord);
    row_ = {};
    row_.rowId = header.rowId == 0 ? 1 : header.rowId;
    pattern_ = header.pattern;
    dataStart_ = header.start + header.taken + processOffset + dataOffset_;
    consumed_ = 0;
    correctionApplied_ = false;
    fieldSetByRecord_ = false;
    for (std::size_t i = 0; i < header.entries.size() && !correctionApplied_; ++i) {
        column_ = static_cast<std::int64_t>(i);
        readColumn(region.data, header.entries[i].serialType);
    }
}

void PlainRecordLoop::readColumn(const Buffer& data, std::int64_t type) {
    if (type <= 0 || type == 10 || type == 11) return;
    if (type == 8 || type == 9) {
        fillModel(ColumnValue(std::int64_t{type == 9}));
    } else if (type <= 7) {
        readNumber(data, type);
    } else if (type % 2 == 0) {
        readBlob(data, (type - 12) / 2);
    } else {
        readText(data, (type - 13) / 2);
    }
}

void PlainRecordLoop::readNumber(const Buffer& data, std::int64_t type) {
    constexpr std::int64_t kWidths[] = {0, 1, 2, 3, 4, 6, 8, 8};
    const std::int64_t width = kWidths[type];
    const std::int64_t at = dataStart_ + consumed_;
    if (!isInside(data, at, width)) {
        events_.count(Event::NumberNotInside);
        return;
    }
    const std::uint64_t bits = bigEndian(data, at, width);
    consume(width);
    if (type == 7) {
        events_.count(Event::Double);
        fillModel(ColumnValue(std::bit_cast<double>(bits)));
    } else if (type == 2) {
        // The two bytes change places, and the result is signed.
        const std::uint64_t swapped = bits % 256 * 256 + bits / 256;
        const auto value = static_cast<std::int16_t>(static_cast<std::uint16_t>(swapped));
        events_.count(value < 0 ? Event::NegativePair : Event::SwappedPair);
        fillModel(ColumnValue(std::int64_t{value}));
    } else if (type == 4) {
        const auto value = static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
        fillModel(ColumnValue(std::int64_t{value}));
    } else {
        // Widths 1, 3 and 6 are not sign-extended.
        fillModel(ColumnValue(static_cast<std::int64_t>(bits)));
    }
}

void PlainRecordLoop::readBlob(const Buffer& data, std::int64_t length) {
    const std::int64_t at = dataStart_ + consumed_;
    if (!isInside(data, at, length)) {
        events_.count(Event::BlobNotInside);
        return;
    }
    const Buffer bytes = subrange(data, at, length);
    consume(length);
    if (isAscii(bytes)) {
        fillModel(ColumnValue(asString(bytes)));
    } else {
        events_.count(Event::BlobNotDecoded);
        fillModel(std::nullopt);
    }
}

void PlainRecordLoop::readText(const Buffer& data, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(data.size());
    const std::int64_t at = dataStart_ + consumed_;
    if (at < 0) {
        events_.count(Event::TextBeforeData);
        throw RangeFailure();
    }
    const bool inside = isInside(data, at, length);
    Buffer bytes;
    if (inside) {
        bytes = subrange(data, at, length);
    } else if (at < size) {
        events_.count(Event::TextCut);
        bytes = subrange(data, at, size - at);
    } else {
        events_.count(Event::TextBeginsPastEnd);
    }
    consume(length);
    if (isUtf8(bytes)) {
        fillModel(ColumnValue(asString(bytes)));
    } else {
        events_.count(Event::TextNotDecoded);
        fillModel(std::nullopt);
    }
    correctDataStart(bytes, inside);
}

void PlainRecordLoop::correctDataStart(const Buffer& text, bool whollyInside) {
    if (dontAttemptAgain_) {
        if (secondReading_) events_.count(Event::CorrectionClearedOnReread);
        dataReposition_ = false;
        dontAttemptAgain_ = false;
        dataOffset_ = 0;
        return;
    }
    const std::int64_t correction = verifyDataPosition(text);
    if (correction == kNoOpinion) {
        events_.count(Event::NoOpinion);
        return;
    }
    if (!fieldSetByRecord_) events_.count(Event::FieldFromEarlierRecord);
    const bool inRange = correction >= -6 && correction <= 6;
    if (correction != 0 && inRange && !dataReposition_ && !secondReading_) {
        applyCorrection(correction, whollyInside);
        return;
    }
    if (correction == 0)
        events_.count(dataReposition_ ? Event::CorrectionConfirmedOnReread : Event::CorrectionZero);
    else if (!dataReposition_)
        events_.count(inRange ? Event::CorrectionAskedTwice : Event::CorrectionTooLarge);
    if (correction == 0 || !dataReposition_) {
        dontAttemptAgain_ = false;
        dataReposition_ = false;
    } else {
        events_.count(Event::CorrectionStillWrongOnReread);
        dontAttemptAgain_ = true;
        dataReposition_ = false;
        dataOffset_ = 0;
    }
}

void PlainRecordLoop::applyCorrection(std::int64_t correction, bool whollyInside) {
    events_.count(whollyInside ? Event::CorrectionApplied : Event::CorrectionAppliedToCutText);
    if (correction == 6 || correction == -6) events_.count(Event::CorrectionAppliedAtLimit);
    dataReposition_ = true;
    if (whollyInside) dontAttemptAgain_ = true;
    dataOffset_ = correction;
    correctionApplied_ = true;
}

std::int64_t PlainRecordLoop::verifyDataPosition(const Buffer& text) const {
    if (field_ != "ZStandZAid") return kNoOpinion;
    const auto dash = std::find(text.begin(), text.end(), std::uint8_t{'-'});
    if (dash == text.end()) {
        events_.count(Event::NoDash);
        return -1 - 10;
    }
    return dash - text.begin() - 10;
}

void PlainRecordLoop::fillModel(const OptionalColumnValue& value) {
    const PlainMapping* mapping = nullptr;
    for (const PlainMapping& candidate : pattern_->mappings) {
        if (candidate.column == column_) {
            mapping = &candidate;
            break;
        }
    }
    if (mapping == nullptr) return;
    field_ = mapping->name;
    fieldSetByRecord_ = true;
    for (auto& [name, current] : row_.columns) {
        if (name != mapping->name) continue;
        events_.count(Event::NameOverwritten);
        current = value;
        return;
    }
    row_.columns.emplace_back(mapping->name, value);
}

void PlainRecordLoop::handOn(const Region& region, const MatchedHeader& header) {
    if (options_.deduplicate) {
        for (const CarvedRow& row : rows) {
            if (row.rowId != row_.rowId) continue;
            events_.count(Event::Duplicate);
            return;
        }
    }
    constexpr Event kRowIn[] = {Event::RowInGap, Event::RowInFreeblock, Event::RowInFreeList,
                                Event::RowAfterRoot, Event::RowInWholePage};
    events_.count(kRowIn[static_cast<std::size_t>(region.space)]);
    if (header.cutOff) events_.count(Event::CutOffHandedOn);
    if (row_.columns.empty()) events_.count(Event::NothingMapped);
    row_.origin.offset = static_cast<std::uint64_t>(region.fileOffset + header.start);
    row_.origin.page = static_cast<std::uint32_t>(region.page);
    row_.origin.space = region.space;
    rows.push_back(row_);
}

void PlainRecordLoop::consume(std::int64_t length) {
    consumed_ = std::min(consumed_ + std::min(length, kFar), kFar);
}

}  // namespace salvor::reference
