#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>

#include "util/Bytes.h"

namespace salvor {

/// With which bytes the serial types of a header's first checked columns can begin. Where a header
/// has fewer, every byte will do.
struct LeadingColumns {
    static constexpr std::size_t kColumns = 4;

    std::array<std::bitset<256>, kColumns> mayBegin;

    /// The bytes of the column that lets the fewest through: every header has one of them.
    const std::bitset<256>& rarest() const;
    friend bool operator==(const LeadingColumns&, const LeadingColumns&) = default;
};

/// What 64 bytes can begin; bit i stands for byte i.
struct BlockMasks {
    std::array<std::uint64_t, LeadingColumns::kColumns> mayBegin{};
    std::uint64_t goesOn = 0;  ///< the byte is not the last one of its varint
};

/// How the masks are worked out. All give the same masks.
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

/// Leading columns made ready for working out masks.
class LeadingColumnTables {
  public:
    explicit LeadingColumnTables(const LeadingColumns& columns);

    /// Fills one entry per whole 64 bytes of `data`; `masks` has room for as many.
    void masks(MaskMethod method, Bytes data, std::span<BlockMasks> masks) const;

  private:
    void plainMasks(Bytes data, std::span<BlockMasks> masks) const;

    /// Bit k of a byte's entry: column k can begin with it; bit 4: it goes on.
    std::array<std::uint8_t, 256> bits_{};
    std::array<NibbleTables, LeadingColumns::kColumns> nibbles_;
};

}  // namespace salvor
