#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "plain_pattern.h"
#include "random_source.h"

namespace salvor::reference {

/// Regions whose records bring about what chance alone hardly ever does.
enum class Staged {
    Nothing,
    CutBlob,   ///< a blob that does not fit before the region's end, and does when read earlier
    MoveBack,  ///< a correction that stays, then a row so short that the search goes back
};

/// Its text's column, behind so many others that small regions are too short for the pattern.
inline constexpr std::size_t kTextOfMoveBack = 30;

/// A pattern as the generator means it; the signatures file is written from it.
struct PlannedPattern {
    std::vector<std::vector<int>> columns;
    std::vector<std::string> versions;                          ///< as written, "iOS56"
    std::vector<std::pair<std::string, std::string>> mappings;  ///< name, column, as written
    bool hasHeader = true;
    Staged staged = Staged::Nothing;

    bool startsWithRowId() const { return columns[0][0] >= 1; }
};

/// One to four patterns of random shape.
std::vector<PlannedPattern> makePatterns(RandomSource& random);
/// Random attribute mappings; the correcting field is often among them.
void addMappings(RandomSource& random, PlannedPattern& pattern);
/// What a reader of the signatures file has to make of the pattern.
PlainPattern meaningOf(const PlannedPattern& pattern);
/// The text of a signatures file whose one table that counts has these patterns.
std::string writeSignatures(RandomSource& random, const std::vector<PlannedPattern>& patterns);

}  // namespace salvor::reference
