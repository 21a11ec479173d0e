#pragma once

#include <cstdint>
#include <vector>

#include "carving/search/ByteSets.h"
#include "carving/search/CandidateMap.h"
#include "carving/search/CompiledPattern.h"
#include "carving/search/LeadingColumns.h"
#include "carving/search/PatternFamily.h"
#include "carving/search/RegionMasks.h"
#include "carving/search/SQLiteTableHeaderInfo.h"
#include "carving/signatures/SqLiteTableSignatures.h"
#include "util/Bytes.h"

namespace salvor {

/// What a search for a header came to.
enum class MatchResult : std::uint8_t {
    Found,
    None,
    ReadFailed,  ///< a varint's 9-byte span ran past the end before anything fitted
};

// How a region is searched. Trying every pattern at every byte costs patterns times bytes, so most
// bytes are ruled out before any header is read, each step leaving less to the next. A step may
// let through what does not fit and never turns down what may.
//
//   LeadingColumns  which bytes a pattern's first four checked columns can begin with
//   rare bytes      of each pattern the set that lets the fewest bytes through, all united: every
//                   header has one of them, so a block of 64 bytes far from any holds no header
//   RegionMasks     near them, a bit per byte and set: does this byte belong to the set?
//   CandidateMap    combines the masks of a group by shifts: a bit per byte at which the leading
//                   columns may follow one another. One map serves every pattern of the group.
//   PatternFamily   patterns of one group that begin alike: reads a candidate's columns once and
//                   keeps a bit per pattern, so that twenty layouts of a table cost little more
//                   than one. What it found is kept for the patterns that ask later.
//   tryPosition     reads the header once more and notes its columns, for the one hit handed out
//
// Near the end of a region a varint's span of nine bytes runs past it. There the failing read is
// an answer in itself, so all steps let such positions through and tryPosition decides.

/// Finds record headers that fit one of a carver's patterns. Every pattern is tried at every
/// position of a region before the next pattern has its turn, so a later match of an earlier
/// pattern wins, and a failing read of an earlier pattern ends the search for all. Answers within
/// one region are remembered and not searched for twice. Allocates nothing per position.
class PatternMatcher {
  public:
    /// Takes over the patterns, decoding them when they are not the ones in use.
    void use(const TablePatterns& patterns);
    /// Starts a new region, which must stay readable until the next one.
    void begin(Bytes region);
    /// The first header at or behind `offset`; `found` is written only when there is one.
    MatchResult find(std::int64_t offset, SQLiteTableHeaderInfo& found);

  private:
    /// Patterns whose first checked columns accept the same share a map of a region's candidates.
    struct Group {
        LeadingSets columns{};
        bool rowIds = false;  ///< some of them begin with a row id
        CandidateMap map;
        bool built = false;
    };
    struct Family {
        std::size_t group = 0;
        PatternFamily patterns;
    };
    struct Pattern {
        CompiledPattern compiled;
        std::size_t family = 0;
        unsigned number = 0;  ///< in its family
    };
    /// What is known of one pattern in this region.
    struct Memory {
        bool known = false;
        bool none = false;          ///< no match from `from` to the end
        std::int64_t from = 0;      ///< searched from here
        std::int64_t position = 0;  ///< the first match
    };

    /// A map per group, and a mask per set of its columns, are all that grows with a region. From
    /// this many groups on, further patterns share one whose columns begin with anything: they are
    /// searched more slowly, and a file with thousands of patterns takes no more memory.
    static constexpr std::size_t kMostGroups = 128;

    std::size_t groupOf(const LeadingColumns& leading);
    Family& familyOf(std::size_t group, bool beginsWithRowId);
    /// Where headers for the patterns of a group may stand.
    const CandidateMap& candidates(std::size_t group);
    MatchResult search(const Pattern& pattern, std::int64_t offset, std::int64_t& position);
    MatchResult tryPosition(const CompiledPattern& pattern, std::int64_t position,
                            SQLiteTableHeaderInfo* info) const;
    std::int64_t length() const { return static_cast<std::int64_t>(region_.size()); }

    TablePatterns inUse_;
    std::vector<Pattern> patterns_;
    std::vector<Memory> memory_;
    std::vector<Group> groups_;
    std::vector<Family> families_;
    ByteSets sets_;             ///< what leading columns may begin with
    ByteSearch rareBytes_{{}};  ///< every header has one of these bytes
    RegionMasks masks_;
    bool masksKnown_ = false;
    MaskMethod method_ = fastestMaskMethod();
    Bytes region_;
};

}  // namespace salvor
