#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "carving/search/ByteSets.h"
#include "util/Bytes.h"

namespace salvor {

/// Where in a region, by blocks of 64 bytes, any header can lie at all: around the bytes of which
/// every header has one. There, and nowhere else, it knows which byte belongs to which set.
class RegionMasks {
  public:
    static constexpr std::size_t kBlock = 64;

    void find(MaskMethod method, const ByteSearch& rare, const ByteSets& sets, Bytes region);

    std::size_t count() const { return near_.size(); }
    /// Whether a header may touch this block.
    bool near(std::size_t block) const { return near_[block] != 0; }
    /// No header touches the blocks in front of this one.
    std::size_t first() const { return first_; }
    /// The masks of a block that a header may touch, as `ByteSets::masks` gives them. Bytes at
    /// which no varint can be read belong to every set.
    std::span<const std::uint64_t> of(std::size_t block) const {
        return std::span(masks_).subspan(block * words_, words_);
    }

  private:
    void findNear(MaskMethod method, const ByteSearch& rare, Bytes region);
    void markNeighbours();
    void findMasks(MaskMethod method, const ByteSets& sets, Bytes region);
    void openUnreadable(std::size_t readable);

    std::vector<std::uint8_t> rare_;
    std::vector<std::uint8_t> near_;
    std::vector<std::uint64_t> masks_;
    std::size_t words_ = 0;
    std::size_t first_ = 0;
};

}  // namespace salvor
