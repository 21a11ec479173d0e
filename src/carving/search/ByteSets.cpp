#include "carving/search/ByteSets.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace salvor {
namespace {

constexpr std::size_t kBlock = 64;

#if defined(__x86_64__)

// The bit that a byte's high nibble names, without its highest bit.
constexpr std::array<std::uint8_t, 16> kBitOf{1, 2, 4, 8, 16, 32, 64, 128,
                                              1, 2, 4, 8, 16, 32, 64, 128};

[[gnu::target("avx2")]] inline __m256i repeated256(const std::array<std::uint8_t, 16>& table) {
    return _mm256_broadcastsi128_si256(
        _mm_loadu_si128(static_cast<const __m128i_u*>(static_cast<const void*>(table.data()))));
}

[[gnu::target("avx2")]] inline __m256i load256(const std::uint8_t* at) {
    return _mm256_loadu_si256(static_cast<const __m256i_u*>(static_cast<const void*>(at)));
}

// For each byte the bit that its high nibble names.
[[gnu::target("avx2")]] inline __m256i highBits256(__m256i bytes) {
    const __m256i high = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(15));
    return _mm256_shuffle_epi8(repeated256(kBitOf), high);
}

// A byte's own bit where it belongs to the set, else 0.
[[gnu::target("avx2")]] inline __m256i members256(const NibbleTables& set, __m256i bytes,
                                                  __m256i bit) {
    // A shuffle gives 0 for a byte whose highest bit is set.
    __m256i entry = _mm256_shuffle_epi8(repeated256(set.below), bytes);
    if (set.anyAbove) {
        const __m256i flipped = _mm256_xor_si256(bytes, _mm256_set1_epi8(-128));
        entry = _mm256_or_si256(entry, _mm256_shuffle_epi8(repeated256(set.above), flipped));
    }
    return _mm256_and_si256(entry, bit);
}

[[gnu::target("avx2")]] bool avx2Blocks(const NibbleTables& wanted, Bytes data,
                                        std::span<std::uint8_t> found) {
    const std::uint8_t* at = data.data();
    unsigned any = 0;
    for (std::uint8_t& block : found) {
        const __m256i first = load256(at);
        const __m256i second = load256(at + 32);
        const __m256i hits = _mm256_or_si256(members256(wanted, first, highBits256(first)),
                                             members256(wanted, second, highBits256(second)));
        block = static_cast<std::uint8_t>(_mm256_testz_si256(hits, hits) == 0);
        any |= block;
        at += kBlock;
    }
    return any != 0;
}

[[gnu::target("avx2")]] inline std::uint64_t bitsOf256(__m256i first, __m256i second) {
    const auto low = static_cast<unsigned>(_mm256_movemask_epi8(first));
    const auto high = static_cast<unsigned>(_mm256_movemask_epi8(second));
    return std::uint64_t{high} << 32 | low;
}

[[gnu::target("avx2")]] void avx2Masks(std::span<const NibbleTables> sets, Bytes data,
                                       std::span<std::uint64_t> masks) {
    const std::uint8_t* at = data.data();
    std::uint64_t* mask = masks.data();
    for (std::size_t block = masks.size() / (sets.size() + 1); block > 0; --block, at += kBlock) {
        const __m256i first = load256(at);
        const __m256i second = load256(at + 32);
        const __m256i firstBit = highBits256(first);
        const __m256i secondBit = highBits256(second);
        for (const NibbleTables& set : sets) {
            *mask++ = bitsOf256(_mm256_cmpeq_epi8(members256(set, first, firstBit), firstBit),
                                _mm256_cmpeq_epi8(members256(set, second, secondBit), secondBit));
        }
        *mask++ = bitsOf256(first, second);
    }
}

#endif

}  // namespace

NibbleTables::NibbleTables(const std::bitset<256>& set) {
    for (unsigned byte = 0; byte < set.size(); ++byte) {
        if (!set[byte]) continue;
        auto& entry = (byte < 0x80 ? below : above)[byte & 15u];
        entry = static_cast<std::uint8_t>(entry | 1u << (byte >> 4 & 7u));
        anyAbove |= byte >= 0x80;
    }
}

ByteSearch::ByteSearch(const std::bitset<256>& wanted) : wanted_(wanted), nibbles_(wanted) {}

bool ByteSearch::blocks(MaskMethod method, Bytes data, std::span<std::uint8_t> found) const {
#if defined(__x86_64__)
    if (method == MaskMethod::Avx2) return avx2Blocks(nibbles_, data, found);
#endif
    static_cast<void>(method);
    unsigned any = 0;
    const std::uint8_t* at = data.data();
    for (std::uint8_t& block : found) {
        unsigned hit = 0;
        for (std::size_t i = 0; i < kBlock; ++i) hit |= wanted_[*at++] ? 1u : 0u;
        block = static_cast<std::uint8_t>(hit);
        any |= hit;
    }
    return any != 0;
}

MaskMethod fastestMaskMethod() {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) return MaskMethod::Avx2;
#endif
    return MaskMethod::Plain;
}

std::size_t ByteSets::add(const std::bitset<256>& set) {
    const auto known = std::find(sets_.begin(), sets_.end(), set);
    const auto number = static_cast<std::size_t>(known - sets_.begin());
    if (known == sets_.end()) {
        sets_.push_back(set);
        nibbles_.emplace_back(set);
    }
    return number;
}

void ByteSets::clear() {
    sets_.clear();
    nibbles_.clear();
}

void ByteSets::masks(MaskMethod method, Bytes data, std::span<std::uint64_t> masks) const {
#if defined(__x86_64__)
    if (method == MaskMethod::Avx2) return avx2Masks(nibbles_, data, masks);
#endif
    static_cast<void>(method);
    plainMasks(data, masks);
}

void ByteSets::plainMasks(Bytes data, std::span<std::uint64_t> masks) const {
    const std::uint8_t* at = data.data();
    for (; masks.size() >= words(); masks = masks.subspan(words()), at += kBlock) {
        for (std::size_t k = 0; k < sets_.size(); ++k) {
            masks[k] = 0;
            for (std::size_t i = 0; i < kBlock; ++i)
                masks[k] |= std::uint64_t{sets_[k][at[i]]} << i;
        }
        std::uint64_t& goesOn = masks[sets_.size()];
        goesOn = 0;
        for (std::size_t i = 0; i < kBlock; ++i) goesOn |= std::uint64_t{at[i] >= 0x80} << i;
    }
}

}  // namespace salvor
