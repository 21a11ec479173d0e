#include "carving/PatternMatcher.h"

#include <algorithm>

#include "carving/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::int64_t kSpan = SQLiteUtils::kVarintSpan;

// The smallest serial type that a class code does not accept any more, going downwards.
std::int64_t classLimit(std::int32_t code) {
    switch (code) {
        case -1:
            return 11;
        case -2:
            return 12;
        default:
            return -std::int64_t{code};
    }
}

// Whether all columns fit the header at `bytes`. Every span that is read must be readable.
bool fits(const CompiledPattern& pattern, const std::uint8_t* bytes) {
    if (pattern.beginsWithRowId) bytes += SQLiteUtils::decodeVarint(bytes).position + 1;
    ++bytes;
    const std::size_t count = pattern.columns.size();
    for (std::size_t column = pattern.firstChecked; column < count; ++column) {
        const std::uint8_t first = *bytes;
        if (first < 0x80) {
            if (!pattern.columns[column].acceptsByte(first)) return false;
            ++bytes;
            continue;
        }
        const varInt serialType = SQLiteUtils::decodeVarint(bytes);
        if (!pattern.columns[column].accepts(serialType.value)) return false;
        bytes += serialType.position;
    }
    return true;
}

LeadingColumns leadingColumns(const CompiledPattern& pattern) {
    LeadingColumns leading;
    for (std::size_t k = 0; k < LeadingColumns::kColumns; ++k) {
        const std::size_t column = pattern.firstChecked + k;
        for (unsigned byte = 0; byte < 256; ++byte) {
            leading.mayBegin[k][byte] =
                column >= pattern.columns.size() || pattern.columns[column].mayBeginWith(byte);
        }
    }
    return leading;
}

}  // namespace

ColumnCodes::ColumnCodes(const std::vector<std::int32_t>& codes) {
    for (const std::int32_t code : codes) {
        if (code < 0) {
            above_ = std::min(above_, classLimit(code));
        } else if (code >= kSmall) {
            exact_.push_back(code);
        } else {
            small_[static_cast<std::size_t>(code) >> 6] |= std::uint64_t{1} << (code & 63);
        }
    }
    for (std::int64_t type = std::min(above_, kSmall) + 1; type < kSmall; ++type) {
        small_[static_cast<std::size_t>(type) >> 6] |= std::uint64_t{1} << (type & 63);
    }
}

bool ColumnCodes::acceptsLarge(std::int64_t serialType) const {
    if (serialType > above_) return true;
    return std::find(exact_.begin(), exact_.end(), serialType) != exact_.end();
}

bool ColumnCodes::mayBeginWith(unsigned byte) const {
    if (byte < 0x80) return acceptsByte(byte);
    // Only a first byte of 0x80, a leading zero, can begin a value below 128.
    return byte == 0x80 || above_ != INT64_MAX || !exact_.empty();
}

CompiledPattern::CompiledPattern(std::shared_ptr<const TablePattern> pattern)
    : source(std::move(pattern)) {
    const HeaderPattern header = source->Header();
    for (const auto& codes : header) columns.emplace_back(codes);
    beginsWithRowId = header.front().front() >= 1;
    firstChecked = beginsWithRowId ? 3 : 1;
    const auto checked =
        static_cast<std::int64_t>(columns.size() - std::min(columns.size(), firstChecked));
    longestSpan = (beginsWithRowId ? kSpan + 2 : 1) + kSpan * checked;
}

void PatternMatcher::use(const TablePatterns& patterns) {
    if (patterns == inUse_) return;
    inUse_ = patterns;
    patterns_.clear();
    groups_.clear();
    std::bitset<256> rare;
    for (const auto& pattern : patterns) {
        if (pattern && pattern->hasHeader) addToGroup(patterns_.emplace_back(pattern));
    }
    for (const Group& group : groups_) rare |= group.columns.rarest();
    rareBytes_ = ByteSearch(rare);
    memory_.assign(patterns_.size(), {});
}

void PatternMatcher::addToGroup(CompiledPattern& pattern) {
    const LeadingColumns columns = leadingColumns(pattern);
    const auto known = std::find_if(groups_.begin(), groups_.end(),
                                    [&](const Group& group) { return group.columns == columns; });
    pattern.group = static_cast<std::size_t>(known - groups_.begin());
    if (known == groups_.end()) groups_.emplace_back(columns);
}

const CandidateMap& PatternMatcher::candidates(std::size_t number) {
    if (!rareBlocksKnown_) rareBlocks_.find(method_, rareBytes_, region_);
    rareBlocksKnown_ = true;
    Group& group = groups_[number];
    if (!group.built) group.map.build(method_, group.tables, rareBlocks_);
    group.built = true;
    return group.map;
}

void PatternMatcher::begin(Bytes region) {
    region_ = region;
    memory_.assign(patterns_.size(), {});
    rareBlocksKnown_ = false;
    for (auto& group : groups_) group.built = false;
}

MatchResult PatternMatcher::find(std::int64_t offset, SQLiteTableHeaderInfo& found) {
    for (std::size_t i = 0; i < patterns_.size(); ++i) {
        Memory& memory = memory_[i];
        const bool answered =
            memory.known && memory.from <= offset && (memory.none || offset <= memory.position);
        if (!answered) {
            const MatchResult result = search(patterns_[i], offset, memory.position);
            if (result == MatchResult::ReadFailed) return result;
            memory.known = true;
            memory.none = result == MatchResult::None;
            memory.from = offset;
        }
        if (memory.none) continue;
        return tryPosition(patterns_[i], memory.position, &found);
    }
    return MatchResult::None;
}

MatchResult PatternMatcher::search(const CompiledPattern& pattern, std::int64_t offset,
                                   std::int64_t& position) {
    const std::int64_t last = length() - static_cast<std::int64_t>(pattern.columns.size());
    const std::int64_t lastSafe = length() - pattern.longestSpan;
    for (position = offset; position < 0 && position <= last; ++position) {
        const MatchResult result = tryPosition(pattern, position, nullptr);
        if (result != MatchResult::None) return result;
    }
    if (position > last) return MatchResult::None;
    const CandidateMap& map = candidates(pattern.group);
    for (;; ++position) {
        position = pattern.beginsWithRowId ? map.nextWithRowId(position) : map.nextPlain(position);
        if (position > last) return MatchResult::None;
        if (position <= lastSafe) {
            if (fits(pattern, region_.data() + position)) return MatchResult::Found;
            continue;
        }
        const MatchResult result = tryPosition(pattern, position, nullptr);
        if (result != MatchResult::None) return result;
    }
}

MatchResult PatternMatcher::tryPosition(const CompiledPattern& pattern, std::int64_t position,
                                        SQLiteTableHeaderInfo* info) const {
    if (info != nullptr) {
        info->Header.clear();
        info->RowId = 0;
    }
    const auto append = [info](std::int64_t serialType, std::int64_t bytes) {
        if (info != nullptr) info->Header.push_back({serialType, bytes});
    };
    std::int64_t taken = 0;
    // A header cut off by the end of the data counts as a match: deliberate, such records stand
    // at the end of freeblocks and pages.
    for (std::size_t column = 0;
         column < pattern.columns.size() && position + taken <= length() - 1;) {
        if (column == 0 && !pattern.beginsWithRowId) {
            append(0, 1);
            ++taken;
            ++column;
            continue;
        }
        const std::int64_t at = position + taken;
        if (at < 0 || at > length() - kSpan) return MatchResult::ReadFailed;
        const varInt number = SQLiteUtils::decodeVarint(region_.data() + at);
        taken += number.position;
        if (column == 0) {
            if (info != nullptr) info->RowId = number.value;
            append(0, number.position);
            append(0, 1);
            append(0, 1);
            taken += 2;
            column = 3;
            continue;
        }
        if (!pattern.columns[column].accepts(number.value)) return MatchResult::None;
        append(number.value, number.position);
        ++column;
    }
    if (info != nullptr) {
        info->Valid = true;
        info->HeaderStartIndex = position;
        info->tablePattern = pattern.source;
        info->headerDataTaken = static_cast<std::int32_t>(taken);
    }
    return MatchResult::Found;
}

}  // namespace salvor
