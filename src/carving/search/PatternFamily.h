#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "carving/search/CandidateMap.h"
#include "carving/search/CompiledPattern.h"
#include "util/Bytes.h"

namespace salvor {

/// Patterns whose headers begin alike, tried together: a header's columns are read once for all.
/// In a set of patterns bit i stands for the one that was added as the i-th.
class PatternFamily {
  public:
    using Set = std::uint32_t;
    static constexpr std::size_t kMost = 32;
    /// So many hits are remembered; the next one makes it forget them.
    static constexpr std::size_t kMostHits = 1024;

    /// A position at which something may have been found.
    struct Hit {
        std::int64_t position = 0;
        Set fits = 0;    ///< the patterns that the header fits whole
        Set unsure = 0;  ///< those that fitted until a column's span ran past the end
    };

    explicit PatternFamily(bool beginsWithRowId) : beginsWithRowId_(beginsWithRowId) {}

    bool beginsWithRowId() const { return beginsWithRowId_; }
    bool isFull() const { return count_ == kMost; }
    /// Returns the number of the pattern in the family, which must not be full.
    unsigned add(const CompiledPattern& pattern);

    /// Whether it is known already that there is no hit for a pattern at or behind `position`.
    bool isKnownToLack(unsigned pattern, std::int64_t position) const {
        return exhausted_ && position >= from_ && (found_ >> pattern & 1u) == 0;
    }
    /// Forgets what was found: another region follows.
    void begin() { startAt(0); }
    /// The first hit for a pattern at or behind `position`, 0 or more, or null. `map` holds the
    /// candidates of `region`. As long as no hit is forgotten every position is looked at once,
    /// whichever pattern asks first.
    const Hit* next(unsigned pattern, std::int64_t position, const CandidateMap& map, Bytes region);

  private:
    struct Column {
        std::array<Set, ColumnCodes::kSmall> accepting{};  ///< by serial type
        Set everyLarge = 0;  ///< accept every serial type of 128 and more
        std::vector<std::pair<unsigned, ColumnCodes>> choosy;
        Set ended = 0;  ///< have no such column

        Set acceptingLarge(std::int64_t serialType) const;
    };

    Hit look(std::int64_t position, Bytes region) const;
    void startAt(std::int64_t position);
    void remember(const Hit& hit);
    /// Looks at the following candidates until something is found; false at the region's end.
    bool lookOn(const CandidateMap& map, Bytes region);

    bool beginsWithRowId_;
    std::size_t count_ = 0;
    Set all_ = 0;
    std::size_t shortest_ = SIZE_MAX;  ///< columns of the pattern that has fewest
    std::vector<Column> columns_;
    std::vector<Hit> hits_;   ///< all from `from_` to `seen_`, in order
    Set found_ = 0;           ///< what fits or may fit anywhere in them
    bool exhausted_ = false;  ///< they reach to the region's end
    std::int64_t from_ = 0;
    std::int64_t seen_ = 0;
};

}  // namespace salvor
