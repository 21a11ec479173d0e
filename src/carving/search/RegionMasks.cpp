#include "carving/search/RegionMasks.h"

#include <algorithm>
#include <array>

#include "carving/format/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::size_t kBlock = RegionMasks::kBlock;
// Farther than this from the unreadable bytes they play no part: a row id, two bytes and three
// columns of nine bytes stand in front of the last of the leading columns.
constexpr std::size_t kTail = 40;

// How many bytes a varint can be read at; reading it behind them fails.
std::size_t readableBytes(Bytes region) {
    return region.size() - std::min(region.size(), SQLiteUtils::kVarintSpan - 1);
}

std::array<std::uint8_t, kBlock> paddedBlock(Bytes rest) {
    std::array<std::uint8_t, kBlock> block{};
    std::copy(rest.begin(), rest.end(), block.begin());
    return block;
}

}  // namespace

void RegionMasks::find(MaskMethod method, const ByteSearch& rare, const ByteSets& sets,
                       Bytes region) {
    findNear(method, rare, region);
    findMasks(method, sets, region);
    openUnreadable(readableBytes(region));
}

void RegionMasks::findNear(MaskMethod method, const ByteSearch& rare, Bytes region) {
    const std::size_t whole = region.size() / kBlock;
    const std::size_t readable = readableBytes(region);
    const std::size_t tail = (readable - std::min(readable, kTail)) / kBlock;
    rare_.resize(whole + 1);
    rare_.back() = 0;
    bool any = rare.blocks(method, region.first(whole * kBlock), std::span(rare_).first(whole));
    if (const Bytes rest = slice(region, whole * kBlock, kBlock); !rest.empty()) {
        const auto padded = paddedBlock(rest);
        any |= rare.blocks(method, padded, std::span(rare_).last(1));
    }
    near_.assign(rare_.size(), 0);
    first_ = tail;
    if (any) markNeighbours();
    // In the tail everything is near: what reaches out of it cannot be read.
    std::fill(near_.begin() + static_cast<std::ptrdiff_t>(tail), near_.end(), 1);
}

// A header that begins in a block has its rare byte there or in the next one, and the columns of
// one that begins with the rare byte reach into the block behind it.
void RegionMasks::markNeighbours() {
    for (std::size_t i = rare_.size(); i-- > 0;) {
        if (rare_[i] == 0) continue;
        const std::size_t last = std::min(i + 1, near_.size() - 1);
        const std::size_t begin = i - std::min<std::size_t>(i, 1);
        for (std::size_t k = begin; k <= last; ++k) near_[k] = 1;
        first_ = std::min(first_, begin);
    }
}

void RegionMasks::findMasks(MaskMethod method, const ByteSets& sets, Bytes region) {
    const std::size_t whole = count() - 1;
    words_ = sets.words();
    masks_.resize(count() * words_);
    for (std::size_t begin = first_; begin < whole;) {
        std::size_t end = begin;
        while (end < whole && near(end)) ++end;
        sets.masks(method, slice(region, begin * kBlock, (end - begin) * kBlock),
                   std::span(masks_).subspan(begin * words_, (end - begin) * words_));
        for (begin = end; begin < whole && !near(begin);) ++begin;
    }
    const auto padded = paddedBlock(slice(region, whole * kBlock, kBlock));
    sets.masks(method, padded, std::span(masks_).last(words_));
}

// A varint is read through a span of nine bytes. Where that fails everything is possible.
void RegionMasks::openUnreadable(std::size_t readable) {
    constexpr std::uint64_t kAll = ~std::uint64_t{0};
    for (std::size_t i = readable / kBlock; i < count(); ++i) {
        const std::size_t begin = i * kBlock;
        const std::uint64_t unreadable =
            readable <= begin ? kAll : kAll << std::min(readable - begin, kBlock - 1);
        for (auto& mask : std::span(masks_).subspan(i * words_, words_)) mask |= unreadable;
    }
}

}  // namespace salvor
