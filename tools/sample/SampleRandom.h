#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace salvor {

/// Small deterministic generator (SplitMix64): the same seed gives the same sample on every
/// machine. No global state.
class SampleRandom {
  public:
    explicit SampleRandom(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15ULL;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31U);
    }
    /// A number from 0 to `bound` - 1; 0 when `bound` is 0.
    std::uint64_t below(std::uint64_t bound) { return bound == 0 ? 0 : next() % bound; }
    std::int64_t between(std::int64_t low, std::int64_t high) {
        return low + static_cast<std::int64_t>(below(static_cast<std::uint64_t>(high - low) + 1));
    }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    template <class Container>
    const auto& pick(const Container& choices) {
        return choices[static_cast<std::size_t>(below(std::size(choices)))];
    }

    /// `count` digits out of `alphabet`.
    std::string digits(std::size_t count, std::string_view alphabet = "0123456789ABCDEF") {
        std::string text;
        for (std::size_t i = 0; i < count; ++i) text += pick(alphabet);
        return text;
    }
    /// An upper-case UUID, as iOS writes them.
    std::string uuid() {
        return digits(8) + "-" + digits(4) + "-4" + digits(3) + "-" + digits(1, "89AB") +
               digits(3) + "-" + digits(12);
    }

  private:
    std::uint64_t state_;
};

}  // namespace salvor
