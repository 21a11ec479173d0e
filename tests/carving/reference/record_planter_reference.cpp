#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "record_planter.h"

namespace salvor::reference {
namespace {

/// The bytes that a value takes; what is too long for any file takes a few.
std::int64_t dataLength(std::uint64_t type) {
    constexpr std::array<std::int64_t, 12> kWidths{0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
    if (type < kWidths.size()) return kWidths[static_cast<std::size_t>(type)];
    return static_cast<std::int64_t>(std::min<std::uint64_t>((type - 12) / 2, 300));
}

}  // namespace

void append(Buffer& buffer, const Buffer& more) {
    buffer.insert(buffer.end(), more.begin(), more.end());
}

Buffer encodeVarint(std::uint64_t value, std::size_t length) {
    Buffer bytes;
    if (value >> 56 != 0 || length >= 9) {
        bytes.assign(9, 0);
        bytes[8] = static_cast<std::uint8_t>(value);
        value >>= 8;
        for (std::size_t i = 8; i-- > 0; value >>= 7)
            bytes[i] = static_cast<std::uint8_t>(0x80 | (value & 0x7F));
        return bytes;
    }
    bytes.push_back(static_cast<std::uint8_t>(value & 0x7F));
    for (value >>= 7; value != 0 || bytes.size() < length; value >>= 7)
        bytes.insert(bytes.begin(), static_cast<std::uint8_t>(0x80 | (value & 0x7F)));
    return bytes;
}

RecordPlanter::RecordPlanter(RandomSource& random, std::vector<PlannedPattern> patterns)
    : random_(random), patterns_(std::move(patterns)) {
    constexpr std::array kDashes{0, 2, 8, 20};
    dashes_ = random_.pick(kDashes);
}

std::uint64_t RecordPlanter::serialType(const std::vector<int>& codes) {
    const int code = random_.pick(codes);
    if (code >= 0) return static_cast<std::uint64_t>(code);
    const auto least = static_cast<std::uint64_t>(code == -1 ? 12 : code == -2 ? 13 : 1 - code);
    if (random_.chance(2)) return least + (random_.bits() >> random_.between(1, 60));
    if (random_.chance(40)) {
        // A text with room for a dash where a correction looks for it.
        const auto type = static_cast<std::uint64_t>(random_.between(12, 30) * 2 + 13);
        if (type >= least) return type;
    }
    return least + static_cast<std::uint64_t>(random_.below(40));
}

Buffer RecordPlanter::text(std::int64_t length) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz 0123456789";
    Buffer bytes;
    const auto dash = earlyDash_           ? random_.between(4, 5)
                      : random_.chance(25) ? 10
                                           : random_.between(3, 18);
    const bool planted = random_.chance(60);
    while (static_cast<std::int64_t>(bytes.size()) < length) {
        const auto at = static_cast<std::int64_t>(bytes.size());
        if (planted && at == dash)
            bytes.push_back('-');
        else if ((!planted || at > dash) && random_.chance(dashes_))
            bytes.push_back('-');
        else if (random_.chance(3) && at + 2 <= length && at != dash - 1)
            append(bytes, {0xC3, 0xA9});
        else
            bytes.push_back(static_cast<std::uint8_t>(random_.pick(kLetters)));
    }
    if (length > 0 && random_.chance(5))
        bytes[static_cast<std::size_t>(random_.below(length))] = random_.byte();
    return bytes;
}

Buffer RecordPlanter::data(std::uint64_t type) {
    const auto length = dataLength(type);
    if (type >= 12) return text(length);
    Buffer bytes;
    while (static_cast<std::int64_t>(bytes.size()) < length)
        bytes.push_back(random_.chance(dashes_ * 2) ? std::uint8_t{'-'} : random_.byte());
    return bytes;
}

Buffer RecordPlanter::varint(std::uint64_t value) {
    if (!random_.chance(4)) return encodeVarint(value);
    return encodeVarint(value, static_cast<std::size_t>(random_.between(2, 9)));
}

Buffer RecordPlanter::rowId() {
    if (random_.chance(80)) return varint(static_cast<std::uint64_t>(random_.below(200)));
    return varint(random_.bits() >> random_.between(0, 60));
}

Buffer RecordPlanter::header(const PlannedPattern& pattern, std::vector<std::uint64_t>& types) {
    Buffer bytes;
    std::size_t first = 1;
    if (pattern.startsWithRowId()) {
        append(bytes, rowId());
        bytes.push_back(static_cast<std::uint8_t>(pattern.columns.size() - 1));
        bytes.push_back(0);
        first = 3;
    } else {
        bytes.push_back(static_cast<std::uint8_t>(pattern.columns.size()));
    }
    for (std::size_t i = first; i < pattern.columns.size(); ++i) {
        types.push_back(serialType(pattern.columns[i]));
        append(bytes, varint(types.back()));
    }
    return bytes;
}

Buffer RecordPlanter::record(std::int64_t gapBeforeData) {
    std::vector<std::uint64_t> types;
    Buffer bytes = header(random_.pick(patterns_), types);
    for (; gapBeforeData > 0; --gapBeforeData) bytes.push_back(random_.byte());
    for (const auto type : types) append(bytes, data(type));
    return bytes;
}

Buffer RecordPlanter::junk() {
    const auto length = random_.chance(10) ? random_.between(50, 300) : random_.below(30);
    const auto kind = random_.below(6);
    Buffer bytes;
    for (std::int64_t i = 0; i < length; ++i) {
        const auto any = random_.byte();
        bytes.push_back(kind == 0   ? any
                        : kind == 1 ? static_cast<std::uint8_t>(any % 40)
                        : kind == 2 ? static_cast<std::uint8_t>(any | 0x80)
                        : kind == 3 ? std::uint8_t{'-'}
                                    : std::uint8_t{0});
    }
    return bytes;
}

/// A long row id whose two following bytes reach the region's end, or just fail to: the one way in
/// which a header is cut off.
void RecordPlanter::endWithLongRowId(Buffer& region) {
    Buffer tail = encodeVarint(random_.bits() >> random_.between(0, 8),
                               static_cast<std::size_t>(random_.between(7, 9)));
    for (auto more = random_.below(4); more > 0; --more) tail.push_back(random_.byte());
    endWith(region, tail);
}

/// The blob misses the region's end by as much as the text that is read in its place asks the data
/// start to move back.
void RecordPlanter::endWithCutBlob(Buffer& region) {
    const auto missing = random_.between(1, 6);
    const auto blob = random_.between(20, 40);
    Buffer tail = encodeVarint(static_cast<std::uint64_t>(random_.between(1, 100)));
    append(tail, {5, 0, 8});
    append(tail, encodeVarint(static_cast<std::uint64_t>(12 + blob * 2)));
    append(tail, encodeVarint(13 + 60 * 2));
    const auto data = tail.size();
    tail.resize(data + static_cast<std::size_t>(blob - missing), 'x');
    tail[data + static_cast<std::size_t>(10 - missing)] = '-';
    endWith(region, tail);
}

/// Either the cut text whose correction stays, or the short row, near the region's front.
void RecordPlanter::stageMoveBack(Buffer& region) {
    std::fill(region.begin(), region.end(), std::uint8_t{'x'});
    Buffer row = encodeVarint(static_cast<std::uint64_t>(random_.between(1, 100)));
    if (random_.chance(50)) {
        append(row, {kTextOfMoveBack, 0});
        row.resize(row.size() + kTextOfMoveBack - 3);
        append(row, encodeVarint(13 + 60 * 2));
        const auto dash = static_cast<std::size_t>(random_.between(4, 6));
        row.resize(row.size() + 20, 'y');
        row[row.size() - 20 + dash] = '-';
        endWith(region, row);
    } else if (region.size() > 20) {
        append(row, {3, 0, 8});
        std::copy(row.begin(), row.end(), region.begin() + random_.below(8));
    }
}

void RecordPlanter::endWith(Buffer& region, const Buffer& tail) {
    if (tail.size() > region.size()) return;
    std::copy(tail.begin(), tail.end(), region.end() - static_cast<std::ptrdiff_t>(tail.size()));
}

Buffer RecordPlanter::fill(std::int64_t length, bool shifted) {
    Buffer region;
    if (shifted) append(region, {0, 0, 0});
    const bool sparse = random_.chance(15);
    earlyDash_ = random_.chance(15);
    if (earlyDash_) append(region, record(shifted ? 1 : 0));
    while (static_cast<std::int64_t>(region.size()) < length) {
        if (random_.chance(sparse ? 95 : 40))
            append(region, junk());
        else
            append(region, record(shifted && random_.chance(85) ? 1 : random_.chance(8)));
    }
    // The last record is cut, or zeros follow it.
    region.resize(static_cast<std::size_t>(length));
    if (random_.chance(30)) {
        const auto zeros = std::min<std::int64_t>(length, random_.between(10, 90));
        std::fill(region.end() - zeros, region.end(), std::uint8_t{0});
    }
    if (random_.chance(12)) endWithLongRowId(region);
    if (patterns_[0].staged == Staged::CutBlob) endWithCutBlob(region);
    if (patterns_[0].staged == Staged::MoveBack) stageMoveBack(region);
    return region;
}

}  // namespace salvor::reference
