#pragma once

#include <cstdint>
#include <optional>

#include "util/Bytes.h"

namespace salvor {

/// A cell of a b-tree page: where it lies, what it carries. Offsets are within the page.
struct Cell {
    std::uint32_t start = 0;
    std::uint32_t end = 0;  ///< behind its last byte on the page
    std::uint32_t payloadAt = 0;
    std::uint32_t local = 0;  ///< bytes of the payload on the page
    std::uint64_t payload = 0;
    std::int64_t rowId = 0;        ///< of table leaves
    std::uint32_t leftChild = 0;   ///< of interior pages
    std::uint32_t overflowAt = 0;  ///< where the number of the first overflow page stands, or 0
};

/// Bytes of a payload of this size that lie in its cell.
std::uint32_t localPayload(std::uint64_t payload, std::uint32_t usable, bool tableLeaf);

/// The header and the pointer array of a b-tree page. A view: lives as long as the page's bytes.
class BtreePage {
  public:
    enum Type : std::uint8_t {
        InteriorIndex = 2,
        InteriorTable = 5,
        LeafIndex = 10,
        LeafTable = 13,
    };

    /// Nothing unless the type is one of the four and header and pointer array lie in the page.
    static std::optional<BtreePage> read(Bytes page, std::uint32_t pageNumber,
                                         std::uint32_t usable);

    Type type() const { return type_; }
    bool isLeaf() const { return (type_ & 8u) != 0; }
    bool isTable() const { return (type_ & 1u) != 0; }
    std::uint32_t cells() const { return cells_; }
    std::uint32_t headerAt() const { return headerAt_; }
    std::uint32_t pointersAt() const { return headerAt_ + (isLeaf() ? 8u : 12u); }
    std::uint32_t pointersEnd() const { return pointersAt() + 2 * cells_; }
    std::uint32_t firstFreeblock() const;
    std::uint32_t contentStart() const;  ///< where the cell area begins, as the header says
    std::uint32_t rightChild() const;
    std::uint32_t cellPointer(std::uint32_t index) const;
    /// The cell at `offset`; nothing when its beginning does not lie in the page.
    std::optional<Cell> cellAt(std::uint32_t offset) const;
    /// Every cell pointer points behind the pointer array and the chain begins inside: what a page
    /// that nobody vouches for has to fulfil to be read as a page.
    bool isSound() const;
    Bytes bytes() const { return page_; }
    std::uint32_t usable() const { return usable_; }

  private:
    Bytes page_;
    std::uint32_t usable_ = 0;
    std::uint32_t headerAt_ = 0;
    std::uint32_t cells_ = 0;
    Type type_ = LeafTable;
};

}  // namespace salvor
