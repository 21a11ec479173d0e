#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "carving/deep/TableDefinition.h"
#include "carving/format/DatabaseLayout.h"
#include "carving/format/SerialType.h"
#include "util/Bytes.h"

namespace salvor::deep {

/// A set of `SerialClass`es, a bit each.
using ClassSet = std::uint16_t;

/// What the values of one column look like: what its definition allows and what rows have shown.
/// A weight is the binary logarithm of how much likelier something is in a row than in other bytes.
class ColumnModel {
  public:
    /// Rows from which on values are judged by what was seen, not by the definition alone.
    static constexpr std::uint64_t kEnough = 20;
    /// A value weighed so badly cannot be the column's.
    static constexpr double kImpossible = -30;
    /// Three values weighed so badly are no row.
    static constexpr double kOdd = -5;

    ColumnModel(const ColumnDefinition& definition, bool alias, const DatabaseLayout& layout);

    void learn(std::uint64_t type, Bytes value, std::int64_t rowId);
    /// Call when learning ends: works out weights.
    void finish();

    ClassSet admissible() const { return admissible_; }
    double typeWeight(SerialClass kind) const { return typeWeights_[kind]; }
    /// How often a value is expected to be of this class, 0 to 1.
    double typeShare(SerialClass kind) const { return shares_[kind]; }
    /// The weight of a whole value of this type.
    double valueWeight(std::uint64_t type, Bytes value) const;
    /// The value in other rows differs.
    bool varies() const { return manyValues_ || values_.size() > 1; }
    /// Texts or numbers of some length that never repeated.
    bool identifies() const;
    /// What to add to the column's integer to get the row id, where that held for every row.
    std::optional<std::int64_t> rowIdOffset() const;

  private:
    void learnInteger(std::int64_t value, std::int64_t rowId);
    void learnText(Bytes text);
    void learnBlob(Bytes blob);
    void learnValue(std::uint64_t hash);
    bool knows(std::uint64_t hash) const;
    bool judges() const { return rows_ >= kEnough; }
    double prior(SerialClass kind) const;
    double integerWeight(std::uint64_t type, Bytes value) const;
    double floatWeight(Bytes value) const;
    double textWeight(Bytes text) const;
    double blobWeight(Bytes blob) const;

    struct Shape {
        std::uint64_t skeleton = 0;
        std::uint32_t count = 0;
    };

    Affinity affinity_;
    bool notNull_;
    bool alias_;
    bool smallIntegers_;
    TextEncoding encoding_;
    ClassSet admissible_ = 0;
    std::uint64_t rows_ = 0;
    std::array<std::uint64_t, kSerialClasses> counts_{};
    std::array<double, kSerialClasses + 1> shares_{};
    std::array<double, kSerialClasses + 1> typeWeights_{};
    std::int64_t lowest_ = INT64_MAX;
    std::int64_t highest_ = INT64_MIN;
    double lowestFloat_ = 0;
    double highestFloat_ = 0;
    std::vector<std::uint64_t> values_;  ///< hashes of distinct values, sorted, up to 40
    bool manyValues_ = false;
    bool repeated_ = false;  ///< a value came twice while values were told apart
    std::uint64_t minCharacters_ = UINT64_MAX;
    std::vector<Shape> shapes_;
    bool manyShapes_ = false;
    std::uint8_t kinds_ = 0;
    bool control_ = false;
    bool invalid_ = false;
    std::string blobBegin_;
    std::string blobEnd_;
    bool offsetHeld_ = true;
    std::optional<std::uint64_t> offset_;
};

}  // namespace salvor::deep
