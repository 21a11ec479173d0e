#include "carving/search/CandidateMap.h"

#include <bit>

namespace salvor {
namespace {

constexpr std::size_t kBlock = RegionMasks::kBlock;
constexpr std::uint64_t kAll = ~std::uint64_t{0};

/// Walks a bit row from its end to its beginning and moves it towards the beginning; behind the
/// end all bits are set. Backwards, because whether a column may begin here depends on what may
/// begin where it ends: of each row one word of what lies behind is all that must be kept.
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

void CandidateMap::build(const LeadingSets& columns, bool rowIds, const RegionMasks& masks) {
    first_ = masks.first();
    combineColumns(columns, masks);
    if (rowIds) findRowIds(masks);
}

void CandidateMap::combineColumns(const LeadingSets& columns, const RegionMasks& masks) {
    columns_.resize(masks.count());
    Backwards goesOnRow;
    std::array<FittingColumns, LeadingColumns::kColumns - 1> pairs;
    for (std::size_t i = masks.count(); i-- > first_;) {
        if (!masks.near(i)) {
            // Nothing is known of the bytes here, so the block in front takes them for anything.
            columns_[i] = 0;
            goesOnRow = {};
            pairs = {};
            continue;
        }
        const auto block = masks.of(i);
        const std::uint64_t goesOn = block.back();
        const std::uint64_t goesOnBehind = goesOnRow.behind(goesOn, 1);
        goesOnRow.pass(goesOn);
        std::uint64_t fits = block[columns.back()];
        for (std::size_t k = pairs.size(); k-- > 0;)
            fits = pairs[k].fit(block[columns[k]], goesOn, goesOnBehind, fits);
        columns_[i] = fits;
    }
}

void CandidateMap::findRowIds(const RegionMasks& masks) {
    rowIds_.resize(masks.count());
    Backwards columnsRow;
    Backwards one;
    Backwards two;
    Backwards four;
    Backwards runOne;
    Backwards runTwo;
    Backwards runFour;
    for (std::size_t i = masks.count(); i-- > first_;) {
        if (!masks.near(i)) {
            rowIds_[i] = 0;
            columnsRow.pass(0);
            one = two = four = columnsRow;
            runOne = runTwo = runFour = {};
            continue;
        }
        const std::uint64_t goesOn = masks.of(i).back();
        // Behind the last byte of a row id stand two more bytes, then the first checked column.
        const std::uint64_t last = ~goesOn & columnsRow.behind(columns_[i], 3);
        const std::uint64_t last9 = columnsRow.behind(columns_[i], 11);
        columnsRow.pass(columns_[i]);
        // In front of it up to seven bytes that go on; eight make a row id with any ninth byte.
        // Runs of 1, 2 and 4 such bytes, joined, reach every length without a step per byte.
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
