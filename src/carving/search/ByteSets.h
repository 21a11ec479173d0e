#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "util/Bytes.h"

namespace salvor {

/// How bytes are compared with sets. All give the same answers.
enum class MaskMethod : std::uint8_t { Plain, Avx2 };

/// The fastest method that this processor has.
MaskMethod fastestMaskMethod();

/// A set of bytes for look-ups in tables of 16: the low four bits of a byte choose an entry, the
/// bit of the entry that its high ones name is the answer.
struct NibbleTables {
    std::array<std::uint8_t, 16> below{};  ///< bytes below 128
    std::array<std::uint8_t, 16> above{};  ///< bytes from 128 on
    bool anyAbove = false;

    NibbleTables() = default;
    explicit NibbleTables(const std::bitset<256>& set);
};

/// A set of bytes made ready for looking for them.
class ByteSearch {
  public:
    explicit ByteSearch(const std::bitset<256>& wanted);

    /// Sets an entry for each whole 64 bytes of `data` in which a wanted byte stands; `found` has
    /// room for as many. True when there is any.
    bool blocks(MaskMethod method, Bytes data, std::span<std::uint8_t> found) const;

  private:
    std::bitset<256> wanted_;
    NibbleTables nibbles_;
};

/// Sets of bytes, to be held against all bytes of a block at once.
class ByteSets {
  public:
    /// The number of this set, a new one unless there was an equal one.
    std::size_t add(const std::bitset<256>& set);
    void clear();

    /// Words that a block's masks take: one for each set and one for the bytes of 128 and more.
    std::size_t words() const { return sets_.size() + 1; }
    /// For each whole 64 bytes of `data` the masks of one block, of which `masks` has room for as
    /// many: in word k bit i tells whether byte i belongs to set k, in the last word whether it is
    /// 128 or more.
    void masks(MaskMethod method, Bytes data, std::span<std::uint64_t> masks) const;

  private:
    void plainMasks(Bytes data, std::span<std::uint64_t> masks) const;

    std::vector<std::bitset<256>> sets_;
    std::vector<NibbleTables> nibbles_;
};

}  // namespace salvor
