#pragma once

#include <cstdint>
#include <vector>

#include "carving/format/BtreePage.h"
#include "util/Bytes.h"

namespace salvor::deep {

/// How much of a cell's beginning stands. A freed cell loses its first four bytes to the header of
/// a freeblock.
enum class Reading : std::uint8_t {
    Whole,
    HeaderStands,  ///< payload length and part of the row id are lost
    HeaderLost,    ///< the record's header length as well; its types stand
    AliasLost,     ///< and the type of the first column, which is the row id's alias
    TypeGuessed,   ///< and the type of the first column, which the cell's end tells
};

/// What a page can hold of readings that are worth weighing; only a hostile one has more.
inline constexpr std::size_t kMostCandidates = 20'000;

/// How much work a page may ask for, whatever its bytes and however many tables there are: some
/// hundred times what a page full of deleted rows needs.
class PageEffort {
  public:
    void begin(std::size_t pageBytes) { left_ = kStepsOfAByte * pageBytes; }
    /// False once the page has had its share.
    bool spend(std::size_t steps) {
        left_ -= steps < left_ ? steps : left_;
        return left_ != 0;
    }
    bool isSpent() const { return left_ == 0; }

  private:
    static constexpr std::size_t kStepsOfAByte = 64;
    std::size_t left_ = 0;
};

/// A place on a page image that reads as a row of a table. Offsets are within the page.
struct Candidate {
    std::uint16_t table = 0;
    std::uint16_t columns = 0;  ///< types in its header, lost ones included
    Reading reading = Reading::Whole;
    std::uint8_t rowIdBytes = 0;
    bool ownPointer = false;  ///< the page's own pointer array names it
    bool damaged = false;     ///< a value in it cannot be the row's
    bool openFirst = false;   ///< of its guessed first column only that it takes no byte is known
    std::uint32_t start = 0;
    std::uint32_t typesAt = 0;  ///< first type that stands
    std::uint32_t bodyAt = 0;
    std::uint32_t end = 0;
    std::uint32_t standsTo = 0;  ///< from there its bytes are another's; the end if none are
    std::uint32_t local = 0;     ///< bytes of the payload in the cell
    std::uint64_t payload = 0;
    std::uint64_t lostType = 0;  ///< of a first column whose type was guessed
    std::int64_t rowId = 0;      ///< of a whole cell
    double score = 0;

    bool isHeadless() const { return reading != Reading::Whole; }
    bool isIntact() const { return !isCut() && !damaged; }
    bool isCut() const { return standsTo < end; }
    /// Whether the length of the record's header stands before its types.
    bool headerStands() const {
        return reading == Reading::Whole || reading == Reading::HeaderStands;
    }
    /// Fills payload, local size and end from a record header of `header` bytes over a body of
    /// `body` bytes. False when the header itself would run over into an overflow page.
    bool place(std::uint64_t header, std::uint64_t body, std::uint32_t usable, bool tableLeaf);
    /// The types of its columns, a lost one included.
    bool types(Bytes page, std::vector<std::uint64_t>& into) const;
    /// Where the number of its first overflow page stands; 0 without one.
    std::uint32_t overflowAt() const { return local < payload ? end - 4 : 0; }
    /// Bytes of values in the cell.
    std::uint32_t bodyOnPage() const { return end - bodyAt - (local < payload ? 4 : 0); }
};

}  // namespace salvor::deep
