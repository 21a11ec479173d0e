#pragma once

#include <cstdint>

#include "carving/deep/Candidate.h"

namespace salvor::deep {

/// What a found row is, once it has been compared with the live ones and the other found ones.
enum class RowFate : std::uint8_t {
    Deleted,
    Earlier,   ///< an earlier version of a row that lives or is listed in its newest version
    Fragment,  ///< something of it is missing
    Copy,      ///< of a live row
    Folded,    ///< a further copy, hanging on the row that is listed
    Dropped,   ///< damaged, and another row tells the same
};

/// What tells a row's id.
enum class RowIdSource : std::uint8_t {
    Cell,
    Values,   ///< another column of the row
    Copy,     ///< another copy of the row
    LiveRow,  ///< the live row that it is an earlier version of
    Index,    ///< an entry of an index
};

/// An accepted candidate, kept small: its values are read again from the page when they are asked
/// for.
struct FoundRow {
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    std::uint64_t hash = 0;  ///< of its content
    std::int64_t rowId = 0;
    std::uint32_t image = 0;
    std::uint32_t nextCopy = kNone;
    std::uint16_t start = 0;
    std::uint16_t typesAt = 0;
    std::uint16_t lastByte = 0;  ///< the last that stands
    std::uint16_t table = 0;
    std::uint16_t columns = 0;
    std::uint16_t lostType = 0;  ///< below 2^14, since such rows are shorter than 128 bytes
    std::int16_t score = 0;
    Reading reading = Reading::Whole;
    RowFate fate = RowFate::Deleted;
    std::uint8_t rowIdBytes = 0;
    bool hasRowId = false;
    bool openFirst = false;  ///< of its first column only that it takes no byte is known
    RowIdSource idSource = RowIdSource::Cell;

    static FoundRow of(const Candidate& candidate, std::uint32_t image);
    /// The candidate again, from the bytes of its page.
    Candidate candidate(Bytes page, std::uint32_t usable, bool tableLeaf) const;
};

}  // namespace salvor::deep
