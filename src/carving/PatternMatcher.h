#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "carving/CandidateMap.h"
#include "carving/LeadingColumns.h"
#include "carving/SQLiteTableHeaderInfo.h"
#include "carving/SqLiteTableSignatures.h"
#include "util/Bytes.h"

namespace salvor {

/// The serial types that one column of a pattern accepts, ready for quick answers.
class ColumnCodes {
  public:
    ColumnCodes() = default;
    explicit ColumnCodes(const std::vector<std::int32_t>& codes);

    bool accepts(std::int64_t serialType) const {
        if (serialType >= 0 && serialType < kSmall)
            return acceptsByte(static_cast<unsigned>(serialType));
        return acceptsLarge(serialType);
    }
    /// The answer for a serial type below 128, that is for a varint of one byte.
    bool acceptsByte(unsigned serialType) const {
        return (small_[serialType >> 6] >> (serialType & 63u) & 1u) != 0;
    }

    /// Whether a varint that begins with this byte can be an accepted serial type.
    bool mayBeginWith(unsigned byte) const;

  private:
    static constexpr std::int64_t kSmall = 128;
    bool acceptsLarge(std::int64_t serialType) const;

    std::array<std::uint64_t, 2> small_{};
    std::int64_t above_ = INT64_MAX;   ///< accepts every serial type above this one
    std::vector<std::int32_t> exact_;  ///< accepted serial types of 128 and more
};

/// A header pattern decoded for matching.
struct CompiledPattern {
    explicit CompiledPattern(std::shared_ptr<const TablePattern> pattern);

    std::shared_ptr<const TablePattern> source;
    std::vector<ColumnCodes> columns;
    bool beginsWithRowId = false;
    std::size_t firstChecked = 1;  ///< first column whose serial type is looked at
    std::int64_t longestSpan = 0;  ///< bytes that trying one position can touch at most
    std::size_t group = 0;         ///< which of the matcher's groups it belongs to
};

/// What a search for a header came to.
enum class MatchResult : std::uint8_t {
    Found,
    None,
    ReadFailed,  ///< a varint's 9-byte span ran past the end before anything fitted
};

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
        explicit Group(const LeadingColumns& leading) : columns(leading), tables(leading) {}
        LeadingColumns columns;
        LeadingColumnTables tables;
        CandidateMap map;
        bool built = false;
    };
    /// What is known of one pattern in this region.
    struct Memory {
        bool known = false;
        bool none = false;          ///< no match from `from` to the end
        std::int64_t from = 0;      ///< searched from here
        std::int64_t position = 0;  ///< the first match
    };

    void addToGroup(CompiledPattern& pattern);
    /// Where headers for the patterns of a group may stand.
    const CandidateMap& candidates(std::size_t group);
    MatchResult search(const CompiledPattern& pattern, std::int64_t offset, std::int64_t& position);
    MatchResult tryPosition(const CompiledPattern& pattern, std::int64_t position,
                            SQLiteTableHeaderInfo* info) const;
    std::int64_t length() const { return static_cast<std::int64_t>(region_.size()); }

    TablePatterns inUse_;
    std::vector<CompiledPattern> patterns_;
    std::vector<Memory> memory_;
    std::vector<Group> groups_;
    ByteSearch rareBytes_{{}};  ///< every header has one of these bytes
    RareBlocks rareBlocks_;
    bool rareBlocksKnown_ = false;
    MaskMethod method_ = fastestMaskMethod();
    Bytes region_;
};

}  // namespace salvor
