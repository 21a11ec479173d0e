#include "carving/CandidateMap.h"

#include <algorithm>
#include <bit>

#include "carving/SQLiteUtils.h"

namespace salvor {
namespace {

constexpr std::size_t kBlock = 64;
// Farther than this from the unreadable bytes they play no part: a row id, two bytes and three
// columns of nine bytes stand in front of the last of the leading columns.
constexpr std::size_t kTail = 40;
constexpr std::uint64_t kAll = ~std::uint64_t{0};

std::array<std::uint8_t, kBlock> paddedBlock(Bytes rest) {
    std::array<std::uint8_t, kBlock> block{};
    std::copy(rest.begin(), rest.end(), block.begin());
    return block;
}

/// Walks a bit row from its end to its beginning and moves it towards the beginning; behind the
/// end all bits are set.
class Backwards {
  public:
    /// The bits `distance` places behind those of `word`.
    std::uint64_t behind(std::uint64_t word, unsigned distance) const {
        return word >> distance | following_ << (kBlock - distance);
    }
    void pass(std::uint64_t word) { following_ = word; }

  private:
    std::uint64_t following_ = kAll;
};

std::uint64_t choose(std::uint64_t condition, std::uint64_t yes, std::uint64_t no) {
    return (yes & condition) | (no & ~condition);
}

/// A column and those behind it, while the rows are walked backwards.
class FittingColumns {
  public:
    /// Where a column can begin here and the following one where it then begins: one byte on, or
    /// two when this column's varint goes on. A varint of three bytes is let through.
    std::uint64_t fit(std::uint64_t mayBegin, std::uint64_t goesOn, std::uint64_t goesOnBehind,
                      std::uint64_t following) {
        const std::uint64_t far = goesOnBehind | rest_.behind(following, 2);
        const std::uint64_t near = rest_.behind(following, 1);
        rest_.pass(following);
        return mayBegin & choose(goesOn, far, near);
    }

  private:
    Backwards rest_;
};

}  // namespace

void RareBlocks::find(MaskMethod method, const ByteSearch& rare, Bytes region) {
    region_ = region;
    const std::size_t whole = region.size() / kBlock;
    readable_ = region.size() - std::min(region.size(), SQLiteUtils::kVarintSpan - 1);
    const std::size_t tail = readable_ - std::min(readable_, kTail);
    rare_.resize(whole + 1);
    rare_.back() = 0;
    bool any = rare.blocks(method, region.first(whole * kBlock), std::span(rare_).first(whole));
    if (const Bytes rest = slice(region, whole * kBlock, kBlock); !rest.empty()) {
        const auto padded = paddedBlock(rest);
        any |= rare.blocks(method, padded, std::span(rare_).last(1));
    }
    near_.assign(rare_.size(), 0);
    first_ = tail / kBlock;
    if (any) markNeighbours();
    // In the tail everything is near: what reaches out of it cannot be read.
    std::fill(near_.begin() + static_cast<std::ptrdiff_t>(tail / kBlock), near_.end(), 1);
}

// A header that begins in a block has its rare byte there or in the next one, and the columns of
// one that begins with the rare byte reach into the block behind it.
void RareBlocks::markNeighbours() {
    for (std::size_t i = rare_.size(); i-- > 0;) {
        if (rare_[i] == 0) continue;
        const std::size_t last = std::min(i + 1, near_.size() - 1);
        const std::size_t begin = i - std::min<std::size_t>(i, 1);
        for (std::size_t k = begin; k <= last; ++k) near_[k] = 1;
        first_ = std::min(first_, begin);
    }
}

void CandidateMap::build(MaskMethod method, const LeadingColumnTables& columns, bool rowIds,
                         const RareBlocks& blocks) {
    first_ = blocks.first();
    readBlocks(method, columns, blocks);
    combineColumns(blocks);
    if (rowIds) findRowIds(blocks);
}

void CandidateMap::readBlocks(MaskMethod method, const LeadingColumnTables& columns,
                              const RareBlocks& blocks) {
    const Bytes region = blocks.region();
    const std::size_t whole = blocks.count() - 1;
    blocks_.resize(blocks.count());
    for (std::size_t begin = first_; begin < whole;) {
        std::size_t end = begin;
        while (end < whole && blocks.near(end)) ++end;
        columns.masks(method, slice(region, begin * kBlock, (end - begin) * kBlock),
                      std::span(blocks_).subspan(begin, end - begin));
        for (begin = end; begin < whole && !blocks.near(begin);) ++begin;
    }
    if (const Bytes rest = slice(region, whole * kBlock, kBlock); !rest.empty()) {
        const auto padded = paddedBlock(rest);
        columns.masks(method, padded, std::span(blocks_).last(1));
    }

    // A varint is read through a span of nine bytes. Where that fails everything is possible.
    const std::size_t readable = blocks.readable();
    for (std::size_t i = readable / kBlock; i < blocks_.size(); ++i) {
        const std::size_t begin = i * kBlock;
        const std::uint64_t unreadable =
            readable <= begin ? kAll : kAll << std::min(readable - begin, kBlock - 1);
        for (auto& mask : blocks_[i].mayBegin) mask |= unreadable;
        blocks_[i].goesOn |= unreadable;
    }
}

void CandidateMap::combineColumns(const RareBlocks& blocks) {
    columns_.resize(blocks_.size());
    Backwards goesOnRow;
    std::array<FittingColumns, LeadingColumns::kColumns - 1> pairs;
    for (std::size_t i = blocks_.size(); i-- > first_;) {
        if (!blocks.near(i)) {
            columns_[i] = 0;
            goesOnRow = {};
            pairs = {};
            continue;
        }
        const BlockMasks& block = blocks_[i];
        const std::uint64_t goesOnBehind = goesOnRow.behind(block.goesOn, 1);
        goesOnRow.pass(block.goesOn);
        std::uint64_t fits = block.mayBegin.back();
        for (std::size_t k = pairs.size(); k-- > 0;)
            fits = pairs[k].fit(block.mayBegin[k], block.goesOn, goesOnBehind, fits);
        columns_[i] = fits;
    }
}

void CandidateMap::findRowIds(const RareBlocks& blocks) {
    rowIds_.resize(blocks_.size());
    Backwards columnsRow;
    Backwards one;
    Backwards two;
    Backwards four;
    Backwards runOne;
    Backwards runTwo;
    Backwards runFour;
    for (std::size_t i = blocks_.size(); i-- > first_;) {
        if (!blocks.near(i)) {
            rowIds_[i] = 0;
            columnsRow.pass(0);
            one = two = four = columnsRow;
            runOne = runTwo = runFour = {};
            continue;
        }
        const std::uint64_t goesOn = blocks_[i].goesOn;
        // Behind the last byte of a row id stand two more bytes, then the first checked column.
        const std::uint64_t last = ~goesOn & columnsRow.behind(columns_[i], 3);
        const std::uint64_t last9 = columnsRow.behind(columns_[i], 11);
        columnsRow.pass(columns_[i]);
        // In front of it up to seven bytes that go on; eight make a row id with any ninth byte.
        const std::uint64_t upTo1 = last | (goesOn & one.behind(last, 1));
        one.pass(last);
        const std::uint64_t run2 = goesOn & runOne.behind(goesOn, 1);
        runOne.pass(goesOn);
        const std::uint64_t upTo3 = upTo1 | (run2 & two.behind(upTo1, 2));
        two.pass(upTo1);
        const std::uint64_t run4 = run2 & runTwo.behind(run2, 2);
        runTwo.pass(run2);
        const std::uint64_t upTo7 = upTo3 | (run4 & four.behind(upTo3, 4));
        four.pass(upTo3);
        const std::uint64_t run8 = run4 & runFour.behind(run4, 4);
        runFour.pass(run4);
        rowIds_[i] = upTo7 | (run8 & last9);
    }
}

std::int64_t CandidateMap::next(const Bits& bits, std::int64_t position) const {
    const auto at = static_cast<std::size_t>(position);
    std::size_t word = at / kBlock;
    if (word >= bits.size()) return position;
    std::uint64_t rest = bits[word] & kAll << at % kBlock;
    if (word < first_) {
        word = first_;
        rest = bits[word];
    }
    while (rest == 0) {
        if (++word == bits.size()) return static_cast<std::int64_t>(bits.size() * kBlock);
        rest = bits[word];
    }
    return static_cast<std::int64_t>(word * kBlock) + std::countr_zero(rest);
}

}  // namespace salvor
