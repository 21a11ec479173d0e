#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace salvor {

/// Where in a database file a byte lies, as SQLite itself sees the file.
enum class SpaceKind : std::uint8_t {
    Gap,  ///< between the cell pointers and the cell content of a b-tree page
    Freeblock,
    FreePage,  ///< on the free list
    Other,     ///< in a live cell, a fragment, an overflow or pointer-map page
};
const char* toString(SpaceKind kind);

struct Place {
    SpaceKind kind = SpaceKind::Other;
    bool afterRoot = false;     ///< behind the last root page of an auto-vacuum database
    std::uint32_t page = 0;     ///< from 1
    std::size_t freeblock = 0;  ///< file offset of the freeblock, if any
};

/// The free and used space of a sound database. Written apart from the carving engine, so that
/// the recall figures do not rest on what they measure.
class FreeSpaceMap {
  public:
    explicit FreeSpaceMap(const std::string& bytes);

    Place at(std::size_t offset) const;
    std::uint32_t pageSize() const { return pageSize_; }

  private:
    std::uint64_t number(std::size_t offset, unsigned bytes) const;
    void walkFreeList();
    Place inTreePage(Place place, std::size_t pageStart, std::size_t offset) const;

    const std::string& bytes_;
    std::uint32_t pageSize_ = 0;
    std::uint32_t lastRoot_ = 0;
    std::vector<bool> free_;  ///< by page number
};

}  // namespace salvor
