#include "carving/search/PatternFamily.h"

#include <algorithm>

#include "carving/format/SQLiteUtils.h"

namespace salvor {

unsigned PatternFamily::add(const CompiledPattern& pattern) {
    const auto number = static_cast<unsigned>(count_++);
    const Set bit = Set{1} << number;
    const std::size_t first = std::min(pattern.firstChecked, pattern.columns.size());
    const std::size_t checked = pattern.columns.size() - first;
    // The patterns before this one end where the columns that they know do.
    while (columns_.size() < checked) columns_.emplace_back().ended = all_;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Column& column = columns_[i];
        if (i >= checked) {
            column.ended |= bit;
            continue;
        }
        const ColumnCodes& codes = pattern.columns[first + i];
        for (unsigned type = 0; type < column.accepting.size(); ++type) {
            if (codes.acceptsByte(type)) column.accepting[type] |= bit;
        }
        if (codes.acceptsEveryLarge()) {
            column.everyLarge |= bit;
        } else {
            column.choosy.emplace_back(number, codes);
        }
    }
    all_ |= bit;
    shortest_ = std::min(shortest_, pattern.columns.size());
    return number;
}

PatternFamily::Set PatternFamily::Column::acceptingLarge(std::int64_t serialType) const {
    if (serialType >= 0 && serialType < ColumnCodes::kSmall)
        return accepting[static_cast<std::size_t>(serialType)];
    // A serial type that is too large for its varint comes out negative and fits no class.
    Set set = serialType >= 0 ? everyLarge : 0;
    for (const auto& [number, codes] : choosy) {
        if (codes.accepts(serialType)) set |= Set{1} << number;
    }
    return set;
}

void PatternFamily::startAt(std::int64_t position) {
    hits_.clear();
    found_ = 0;
    exhausted_ = false;
    from_ = position;
    seen_ = position;
}

void PatternFamily::remember(const Hit& hit) {
    // Some pattern may fit at every byte, and each of many families would keep them all.
    if (hits_.size() == kMostHits) {
        hits_.clear();
        found_ = 0;
        from_ = hit.position;
    }
    hits_.push_back(hit);
    found_ |= hit.fits | hit.unsure;
}

const PatternFamily::Hit* PatternFamily::next(unsigned pattern, std::int64_t position,
                                              const CandidateMap& map, Bytes region) {
    if (position < from_ || (position > seen_ && !exhausted_)) startAt(position);
    const Set bit = Set{1} << pattern;
    const auto known =
        std::lower_bound(hits_.begin(), hits_.end(), position,
                         [](const Hit& hit, std::int64_t wanted) { return hit.position < wanted; });
    for (auto i = static_cast<std::size_t>(known - hits_.begin());; ++i) {
        if (i == hits_.size()) {
            if (!lookOn(map, region)) return nullptr;
            i = hits_.size() - 1;
        }
        if (((hits_[i].fits | hits_[i].unsure) & bit) != 0) return &hits_[i];
    }
}

bool PatternFamily::lookOn(const CandidateMap& map, Bytes region) {
    // A header has as many bytes as columns at least.
    const auto last =
        static_cast<std::int64_t>(region.size()) - static_cast<std::int64_t>(shortest_);
    while (!exhausted_) {
        const std::int64_t position =
            beginsWithRowId_ ? map.nextWithRowId(seen_) : map.nextPlain(seen_);
        seen_ = position + 1;
        exhausted_ = position > last;
        if (exhausted_) break;
        const Hit hit = look(position, region);
        if ((hit.fits | hit.unsure) == 0) continue;
        remember(hit);
        return true;
    }
    return false;
}

PatternFamily::Hit PatternFamily::look(std::int64_t position, Bytes region) const {
    constexpr std::size_t kSpan = SQLiteUtils::kVarintSpan;
    const std::uint8_t* const bytes = region.data();
    const std::size_t readable = region.size() - std::min(region.size(), kSpan - 1);
    Hit hit{position, 0, all_};
    auto at = static_cast<std::size_t>(position);
    if (beginsWithRowId_) {
        if (at >= readable) return hit;
        at += static_cast<std::size_t>(SQLiteUtils::decodeVarint(bytes + at).position) + 1;
    }
    ++at;
    for (const Column& column : columns_) {
        hit.fits |= hit.unsure & column.ended;
        hit.unsure &= ~column.ended;
        if (hit.unsure == 0 || at >= readable) return hit;
        if (bytes[at] < ColumnCodes::kSmall) {
            hit.unsure &= column.accepting[bytes[at]];
            ++at;
        } else {
            const varInt serialType = SQLiteUtils::decodeVarint(bytes + at);
            hit.unsure &= column.acceptingLarge(serialType.value);
            at += static_cast<std::size_t>(serialType.position);
        }
    }
    hit.fits |= hit.unsure;
    hit.unsure = 0;
    return hit;
}

}  // namespace salvor
