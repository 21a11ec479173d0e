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
                                 const PlainOptions& options)
    : matcher_(patterns), options_(options) {}

void PlainRecordLoop::parse(const Region& region, std::int64_t start) {
    const auto length = static_cast<std::int64_t>(region.data.size());
    if (length <= 15) return;
    dontAttemptAgain_ = false;
    secondReading_ = false;
    std::set<std::tuple<std::int64_t, bool, bool, std::int64_t>> states;
    std::int64_t offset = start;
    while (offset < length - 1) {
        if (!states.emplace(offset, dataReposition_, dontAttemptAgain_, dataOffset_).second) return;
        const MatchedHeader header = matcher_.find(region.data, offset);
        if (!header.valid) return;
        readRecord(region, header);
        secondReading_ = correctionApplied_;
        if (dataReposition_) continue;
        offset = dataStart_ + consumed_;
        handOn(region, header);
    }
}

void PlainRecordLoop::readRecord(const Region& region, const MatchedHeader& header) {
    row_ = {};
    row_.rowId = header.rowId == 0 ? 1 : header.rowId;
    pattern_ = header.pattern;
    dataStart_ = header.start + header.taken + processOffset + dataOffset_;
    consumed_ = 0;
    correctionApplied_ = false;
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
    if (!isInside(data, at, width)) return;
    const std::uint64_t bits = bigEndian(data, at, width);
    consume(width);
    if (type == 7) {
        fillModel(ColumnValue(std::bit_cast<double>(bits)));
    } else if (type == 2) {
        // The two bytes change places, and the result is signed.
        const std::uint64_t swapped = bits % 256 * 256 + bits / 256;
        const auto value = static_cast<std::int16_t>(static_cast<std::uint16_t>(swapped));
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
    if (!isInside(data, at, length)) return;
    const Buffer bytes = subrange(data, at, length);
    consume(length);
    fillModel(isAscii(bytes) ? OptionalColumnValue(asString(bytes)) : std::nullopt);
}

void PlainRecordLoop::readText(const Buffer& data, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(data.size());
    const std::int64_t at = dataStart_ + consumed_;
    if (at < 0) throw RangeFailure();
    const bool inside = isInside(data, at, length);
    Buffer bytes;
    if (at < size) bytes = subrange(data, at, std::min(length, size - at));
    consume(length);
    fillModel(isUtf8(bytes) ? OptionalColumnValue(asString(bytes)) : std::nullopt);
    correctDataStart(bytes, inside);
}

void PlainRecordLoop::correctDataStart(const Buffer& text, bool whollyInside) {
    if (dontAttemptAgain_) {
        dataReposition_ = false;
        dontAttemptAgain_ = false;
        dataOffset_ = 0;
        return;
    }
    const std::int64_t correction = verifyDataPosition(text);
    if (correction == kNoOpinion) return;
    const bool inRange = correction >= -6 && correction <= 6;
    if (correction != 0 && inRange && !dataReposition_ && !secondReading_) {
        dataReposition_ = true;
        if (whollyInside) dontAttemptAgain_ = true;
        dataOffset_ = correction;
        correctionApplied_ = true;
        return;
    }
    dontAttemptAgain_ = correction != 0 && dataReposition_;
    if (dontAttemptAgain_) dataOffset_ = 0;
    dataReposition_ = false;
}

std::int64_t PlainRecordLoop::verifyDataPosition(const Buffer& text) const {
    if (field_ != "ZStandZAid") return kNoOpinion;
    const auto dash = std::find(text.begin(), text.end(), std::uint8_t{'-'});
    if (dash == text.end()) return -1 - 10;
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
    for (auto& [name, current] : row_.columns) {
        if (name != mapping->name) continue;
        current = value;
        return;
    }
    row_.columns.emplace_back(mapping->name, value);
}

void PlainRecordLoop::handOn(const Region& region, const MatchedHeader& header) {
    const auto known = [this](const CarvedRow& row) { return row.rowId == row_.rowId; };
    if (options_.deduplicate && std::any_of(rows.begin(), rows.end(), known)) return;
    row_.origin.offset = static_cast<std::uint64_t>(region.fileOffset + header.start);
    row_.origin.page = static_cast<std::uint32_t>(region.page);
    row_.origin.space = region.space;
    rows.push_back(row_);
}

void PlainRecordLoop::consume(std::int64_t length) {
    consumed_ = std::min(consumed_ + std::min(length, kFar), kFar);
}

}  // namespace salvor::reference
