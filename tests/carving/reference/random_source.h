#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace salvor::reference {

/// Random choices that are the same for a seed with every standard library.
class RandomSource {
  public:
    explicit RandomSource(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t bits() { return engine_(); }
    /// 0 up to, not including, `limit`.
    std::int64_t below(std::int64_t limit) {
        return static_cast<std::int64_t>(bits() % static_cast<std::uint64_t>(limit));
    }
    std::int64_t between(std::int64_t least, std::int64_t most) {
        return least + below(most - least + 1);
    }
    bool chance(int percent) { return below(100) < percent; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(bits() >> 56); }
    template <class Choices>
    auto pick(const Choices& choices) {
        return choices[static_cast<std::size_t>(
            below(static_cast<std::int64_t>(std::size(choices))))];
    }

  private:
    std::mt19937_64 engine_;
};

}  // namespace salvor::reference
