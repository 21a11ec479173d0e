#include "carving/deep/ColumnModel.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "carving/deep/ContentHash.h"
#include "carving/deep/TextTraits.h"
#include "carving/format/BigEndian.h"

namespace salvor::deep {
namespace {

using Weights = std::array<double, kSerialClasses>;

constexpr ClassSet bit(SerialClass kind) {
    return static_cast<ClassSet>(1u << kind);
}

constexpr ClassSet kIntegers = 0x37E;  // 1 to 6, 8, 9
constexpr ClassSet kAllClasses = 0xFFF;

// How often random bytes read as each class.
constexpr Weights kRandom = {1.0 / 6,  1.0 / 24, 1.0 / 40, 1.0 / 40, 1.0 / 40, 1.0 / 60,
                             1.0 / 60, 1.0 / 60, 1.0 / 12, 1.0 / 16, 1.0 / 5,  1.0 / 5};

/// What a column of an affinity is expected to hold before a row has been seen, and what it may
/// hold at all.
struct AffinityRow {
    ClassSet allowed;
    Weights expected;
};
constexpr std::array<AffinityRow, 5> kAffinities = {{
    {bit(kNull) | bit(kText), {.3, 0, 0, 0, 0, 0, 0, 0, 0, 0, .7, 0}},
    {bit(kNull) | bit(kFloat) | kIntegers, {.18, .2, .08, .06, .1, .03, .04, .03, .15, .13, 0, 0}},
    {bit(kNull) | bit(kFloat) | kIntegers, {.18, .06, .04, .03, .06, .02, .03, .4, .12, .06, 0, 0}},
    {bit(kNull) | bit(kFloat) | kIntegers, {.18, .14, .06, .05, .12, .04, .04, .12, .15, .1, 0, 0}},
    {kAllClasses, {.2, .08, .03, .03, .06, .02, .02, .04, .1, .06, .16, .2}},
}};

// Of a column's integers so many may come in sizes that no row has shown.
constexpr double kOtherSizes = 0.02;
constexpr std::size_t kFewValues = 12;
constexpr std::size_t kMaxValues = 40;
constexpr std::size_t kMaxShapes = 3;
constexpr std::size_t kBlobEdge = 16;

std::uint64_t hashOf(std::uint64_t type, Bytes value) {
    ContentHash hash;
    hash.add(type);
    hash.add(value);
    return hash.value();
}

std::size_t commonPrefix(Bytes a, std::string_view b) {
    std::size_t n = 0;
    while (n < a.size() && n < b.size() && a[n] == static_cast<std::uint8_t>(b[n])) ++n;
    return n;
}

std::size_t commonSuffix(Bytes a, std::string_view b) {
    std::size_t n = 0;
    while (n < a.size() && n < b.size() &&
           a[a.size() - 1 - n] == static_cast<std::uint8_t>(b[b.size() - 1 - n]))
        ++n;
    return n;
}

std::string edge(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

double asFloat(Bytes value) {
    return std::bit_cast<double>(bigEndian<8>(value, 0));
}

bool absurd(double value) {
    const double size = std::fabs(value);
    return !std::isfinite(value) || size > 1e18 || (size != 0 && size < 1e-12);
}

}  // namespace

ColumnModel::ColumnModel(const ColumnDefinition& definition, bool alias,
                         const DatabaseLayout& layout)
    : affinity_(definition.affinity),
      notNull_(definition.notNull),
      alias_(alias),
      smallIntegers_(layout.smallIntegers()),
      encoding_(layout.encoding) {
    finish();
}

void ColumnModel::learn(std::uint64_t type, Bytes value, std::int64_t rowId) {
    const SerialClass kind = serialClass(type);
    if (kind == kReserved || value.size() != serialLength(type)) return;
    ++rows_;
    ++counts_[kind];
    if (isInteger(kind)) {
        learnInteger(serialInteger(type, value).value_or(0), rowId);
    } else if (kind == kFloat) {
        const double number = asFloat(value);
        const bool first = counts_[kFloat] == 1;
        lowestFloat_ = first ? number : std::min(lowestFloat_, number);
        highestFloat_ = first ? number : std::max(highestFloat_, number);
    } else if (kind == kText) {
        learnText(value);
    } else if (kind == kBlob) {
        learnBlob(value);
    }
    if (kind != kNull) learnValue(hashOf(type, value));
}

void ColumnModel::learnInteger(std::int64_t value, std::int64_t rowId) {
    lowest_ = std::min(lowest_, value);
    highest_ = std::max(highest_, value);
    const auto offset = static_cast<std::uint64_t>(rowId) - static_cast<std::uint64_t>(value);
    offsetHeld_ = offsetHeld_ && (!offset_ || *offset_ == offset);
    offset_ = offset;
}

void ColumnModel::learnText(Bytes text) {
    const TextTraits traits = textTraits(text, encoding_);
    control_ |= traits.control;
    invalid_ |= !traits.valid;
    kinds_ |= traits.kinds;
    minCharacters_ = std::min<std::uint64_t>(minCharacters_, traits.characters);
    if (manyShapes_) return;
    const auto known = std::find_if(shapes_.begin(), shapes_.end(), [&](const Shape& shape) {
        return shape.skeleton == traits.skeleton;
    });
    if (known != shapes_.end()) {
        ++known->count;
    } else if (traits.skeleton == 0 || shapes_.size() == kMaxShapes) {
        manyShapes_ = true;
    } else {
        shapes_.push_back({traits.skeleton, 1});
    }
}

void ColumnModel::learnBlob(Bytes blob) {
    if (counts_[kBlob] == 1) {
        blobBegin_ = edge(slice(blob, 0, kBlobEdge));
        blobEnd_ = edge(blob.last(std::min(blob.size(), kBlobEdge)));
    }
    blobBegin_.resize(commonPrefix(blob, blobBegin_));
    blobEnd_.erase(0, blobEnd_.size() - commonSuffix(blob, blobEnd_));
}

void ColumnModel::learnValue(std::uint64_t hash) {
    const auto place = std::lower_bound(values_.begin(), values_.end(), hash);
    if (place != values_.end() && *place == hash) {
        repeated_ = true;
    } else if (values_.size() < kMaxValues) {
        values_.insert(place, hash);
    } else {
        manyValues_ = true;
    }
}

bool ColumnModel::knows(std::uint64_t hash) const {
    return std::binary_search(values_.begin(), values_.end(), hash);
}

double ColumnModel::prior(SerialClass kind) const {
    return kAffinities[static_cast<std::size_t>(affinity_)].expected[kind];
}

void ColumnModel::finish() {
    admissible_ = kAffinities[static_cast<std::size_t>(affinity_)].allowed;
    if (notNull_) admissible_ = static_cast<ClassSet>(admissible_ & ~bit(kNull));
    for (std::size_t i = 0; i < counts_.size(); ++i)
        if (counts_[i] != 0) admissible_ |= bit(static_cast<SerialClass>(i));
    if (alias_) admissible_ = bit(kNull);

    double integers = 0;
    double spread = 0;
    for (std::size_t i = 0; i < counts_.size(); ++i)
        if ((kIntegers >> i & 1u) != 0) {
            integers += static_cast<double>(counts_[i]);
            spread += prior(static_cast<SerialClass>(i));
        }
    const double others = kOtherSizes * integers;
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        const auto kind = static_cast<SerialClass>(i);
        double seen = static_cast<double>(counts_[i]) + std::max(prior(kind), 0.002);
        if ((kIntegers >> i & 1u) != 0 && spread > 0) seen += others * prior(kind) / spread;
        const double share = seen / (static_cast<double>(rows_) + 1 + others);
        shares_[i] = share;
        typeWeights_[i] = std::log2(share / kRandom[i]);
    }
    if (alias_) typeWeights_[kNull] = -std::log2(kRandom[kNull]);
    typeWeights_[kReserved] = kImpossible;
}

bool ColumnModel::identifies() const {
    constexpr std::uint64_t kTellingText = 5;
    constexpr std::int64_t kTellingNumber = 1000;
    if (rows_ < kEnough || repeated_ || alias_ || (!manyValues_ && values_.size() < rows_))
        return false;
    if (counts_[kText] == rows_) return minCharacters_ >= kTellingText;
    std::uint64_t integers = 0;
    for (std::size_t i = 0; i < counts_.size(); ++i)
        if ((kIntegers >> i & 1u) != 0) integers += counts_[i];
    return integers == rows_ && highest_ > kTellingNumber;
}

std::optional<std::int64_t> ColumnModel::rowIdOffset() const {
    if (alias_ || !judges() || !offsetHeld_ || !offset_ || !varies()) return std::nullopt;
    return static_cast<std::int64_t>(*offset_);
}

double ColumnModel::valueWeight(std::uint64_t type, Bytes value) const {
    const SerialClass kind = serialClass(type);
    if (isInteger(kind)) return integerWeight(type, value);
    if (kind == kFloat) return floatWeight(value);
    if (kind == kText) return textWeight(value);
    if (kind == kBlob) return blobWeight(value);
    return 0;
}

double ColumnModel::integerWeight(std::uint64_t type, Bytes bytes) const {
    const std::int64_t value = serialInteger(type, bytes).value_or(0);
    if (type != integerType(value, smallIntegers_)) return -14;
    if (!judges() || lowest_ > highest_) return 0;
    const double bits = 8.0 * static_cast<double>(bytes.size());
    if (!manyValues_ && values_.size() <= kFewValues)
        return knows(hashOf(type, bytes))
                   ? std::max(0.0, bits - std::log2(static_cast<double>(values_.size())))
                   : kOdd;
    const double width =
        std::max(1.0, static_cast<double>(highest_) - static_cast<double>(lowest_));
    const auto number = static_cast<double>(value);
    if (number < static_cast<double>(lowest_) - width ||
        number > static_cast<double>(highest_) + width)
        return -12;
    return std::clamp(bits - std::log2(3 * width), 0.0, 24.0);
}

double ColumnModel::floatWeight(Bytes bytes) const {
    if (bytes.size() < 8) return 0;
    const double value = asFloat(bytes);
    if (absurd(value)) return kImpossible;
    // SQLite stores whole numbers of such columns as integers.
    const bool whole = affinity_ != Affinity::None && affinity_ != Affinity::Text &&
                       value == std::trunc(value) && std::fabs(value) < 140737488355328.0;
    if (whole) return -14;
    if (!judges() || counts_[kFloat] == 0) return 0;
    const double width = std::max(1.0, highestFloat_ - lowestFloat_);
    return value >= lowestFloat_ - width && value <= highestFloat_ + width ? 16 : -20;
}

double ColumnModel::textWeight(Bytes text) const {
    const bool shaped = judges() && !manyShapes_ && !shapes_.empty();
    const TextTraits traits = textTraits(text, encoding_, shaped);
    if (!traits.valid) return invalid_ ? 0 : -60;
    if (traits.control && !control_) return -50;
    const auto characters = static_cast<double>(traits.characters);
    if (!judges() || counts_[kText] == 0) return std::min(8.0, 0.7 * characters);
    double weight = std::min(18.0, 1.5 * characters);
    const auto texts = static_cast<double>(counts_[kText]);
    if (!manyValues_ && values_.size() <= kFewValues)
        return knows(hashOf(12 + 1 + 2 * std::uint64_t{text.size()}, text)) ? weight + 14
                                                                            : weight - 6;
    if (!shaped || texts < static_cast<double>(kEnough)) return weight;
    const bool kept = (traits.kinds & ~kinds_) == 0 &&
                      std::any_of(shapes_.begin(), shapes_.end(), [&](const Shape& shape) {
                          return shape.skeleton == traits.skeleton;
                      });
    if (kept) return weight + 20;
    // A shape that came once may well be followed by another new one.
    const bool settled = std::all_of(shapes_.begin(), shapes_.end(),
                                     [](const Shape& shape) { return shape.count > 2; });
    return settled ? weight - 40 : weight - 6;
}

double ColumnModel::blobWeight(Bytes blob) const {
    if (!judges() || counts_[kBlob] < kEnough) return 0;
    double weight = 0;
    if (blobBegin_.size() >= 2)
        weight += commonPrefix(blob, blobBegin_) == blobBegin_.size() ? 16 : -40;
    if (blobEnd_.size() >= 2) weight += commonSuffix(blob, blobEnd_) == blobEnd_.size() ? 10 : -40;
    return weight;
}

}  // namespace salvor::deep
