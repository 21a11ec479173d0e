#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "carving/deep/RecoveredRow.h"
#include "tools/sample/RecoverySample.h"

namespace salvor {

/// What a recovery brought back of deletions that are known.
struct RecoveryTally {
    struct Count {
        std::uint64_t right = 0;
        std::uint64_t wrong = 0;
        std::uint64_t all() const { return right + wrong; }
    };

    Count whole;             ///< deleted rows that stand whole: found, not found
    Count headless;          ///< that lost their first four bytes
    Count spilled;           ///< that had overflow pages, whatever is left of them
    Count shown;             ///< rows shown as deleted: a deleted row's values, or not
    std::uint64_t live = 0;  ///< shown as deleted, and a live row's
    std::array<Count, 3> confidence;
    std::map<std::string, Count> space;
    Count rowIds;                  ///< told: right, wrong
    std::uint64_t lostRowIds = 0;  ///< not told
    std::string misses;            ///< the first few faults, in words

    /// Recovers the sample at `path` and adds what came of it.
    void add(const RecoverySample& sample, const std::filesystem::path& path);
    double recall() const;
    double precision() const;
};

}  // namespace salvor
