#include "carving/search/PatternMatcher.h"

#include <algorithm>

#include "carving/format/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::int64_t kSpan = SQLiteUtils::kVarintSpan;

}  // namespace

void PatternMatcher::use(const TablePatterns& patterns) {
    if (patterns == inUse_) return;
    inUse_ = patterns;
    patterns_.clear();
    groups_.clear();
    families_.clear();
    sets_.clear();
    std::bitset<256> rare;
    for (const auto& pattern : patterns) {
        if (!pattern || !pattern->hasHeader) continue;
        CompiledPattern compiled(pattern);
        const LeadingColumns leading(compiled);
        rare |= leading.rarest();
        Family& family = familyOf(groupOf(leading), compiled.beginsWithRowId);
        const unsigned number = family.patterns.add(compiled);
        const auto place = static_cast<std::size_t>(&family - families_.data());
        patterns_.push_back({std::move(compiled), place, number});
    }
    rareBytes_ = ByteSearch(rare);
    memory_.assign(patterns_.size(), {});
}

std::size_t PatternMatcher::groupOf(const LeadingColumns& leading) {
    LeadingSets columns{};
    const bool full = groups_.size() >= kMostGroups;
    const auto anything = ~std::bitset<256>();
    std::transform(leading.mayBegin.begin(), leading.mayBegin.end(), columns.begin(),
                   [&](const auto& set) { return sets_.add(full ? anything : set); });
    const auto known = std::find_if(groups_.begin(), groups_.end(),
                                    [&](const Group& group) { return group.columns == columns; });
    const auto number = static_cast<std::size_t>(known - groups_.begin());
    if (known == groups_.end()) groups_.emplace_back().columns = columns;
    return number;
}

PatternMatcher::Family& PatternMatcher::familyOf(std::size_t group, bool beginsWithRowId) {
    groups_[group].rowIds |= beginsWithRowId;
    const auto known = std::find_if(families_.begin(), families_.end(), [&](const Family& family) {
        return family.group == group && !family.patterns.isFull() &&
               family.patterns.beginsWithRowId() == beginsWithRowId;
    });
    if (known != families_.end()) return *known;
    families_.push_back({group, PatternFamily(beginsWithRowId)});
    return families_.back();
}

const CandidateMap& PatternMatcher::candidates(std::size_t number) {
    if (!masksKnown_) masks_.find(method_, rareBytes_, sets_, region_);
    masksKnown_ = true;
    Group& group = groups_[number];
    if (!group.built) group.map.build(group.columns, group.rowIds, masks_);
    group.built = true;
    return group.map;
}

void PatternMatcher::begin(Bytes region) {
    region_ = region;
    memory_.assign(patterns_.size(), {});
    masksKnown_ = false;
    for (auto& group : groups_) group.built = false;
    for (auto& family : families_) family.patterns.begin();
}

MatchResult PatternMatcher::find(std::int64_t offset, SQLiteTableHeaderInfo& found) {
    for (std::size_t i = 0; i < patterns_.size(); ++i) {
        Memory& memory = memory_[i];
        const bool answered =
            memory.known && memory.from <= offset && (memory.none || offset <= memory.position);
        if (!answered) {
            const Pattern& pattern = patterns_[i];
            if (families_[pattern.family].patterns.isKnownToLack(pattern.number, offset)) continue;
            std::int64_t position = 0;
            const MatchResult result = search(pattern, offset, position);
            if (result == MatchResult::ReadFailed) return result;
            memory = {true, result == MatchResult::None, offset, position};
        }
        if (memory.none) continue;
        // Only now are the columns noted: a remembered answer is a position alone.
        return tryPosition(patterns_[i].compiled, memory.position, &found);
    }
    return MatchResult::None;
}

MatchResult PatternMatcher::search(const Pattern& pattern, std::int64_t offset,
                                   std::int64_t& position) {
    const CompiledPattern& compiled = pattern.compiled;
    const std::int64_t last = length() - static_cast<std::int64_t>(compiled.columns.size());
    // A correction backwards can begin a search in front of the region, which no map covers.
    for (position = offset; position < 0 && position <= last; ++position) {
        const MatchResult result = tryPosition(compiled, position, nullptr);
        if (result != MatchResult::None) return result;
    }
    Family& family = families_[pattern.family];
    const PatternFamily::Set bit = PatternFamily::Set{1} << pattern.number;
    for (; position <= last; ++position) {
        const auto* hit =
            family.patterns.next(pattern.number, position, candidates(family.group), region_);
        if (hit == nullptr || hit->position > last) break;
        position = hit->position;
        if ((hit->fits & bit) != 0) return MatchResult::Found;
        // A span ran past the end before the family could tell: fitting, failing or neither.
        const MatchResult result = tryPosition(compiled, position, nullptr);
        if (result != MatchResult::None) return result;
    }
    return MatchResult::None;
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
    // A header cut off by the end of the data counts as a match. Kept: cut-header-matches.
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
