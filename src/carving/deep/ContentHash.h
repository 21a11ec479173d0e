#pragma once

#include <cstdint>
#include <cstring>

#include "util/Bytes.h"

namespace salvor::deep {

/// A fast hash of 64 bits over the parts of a row, for telling equal contents.
class ContentHash {
  public:
    void add(std::uint64_t word) {
        const __uint128_t product = static_cast<__uint128_t>(state_ ^ word) * 0x9FB21C651E98DF25;
        state_ = static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64) ^
                 0x2545F4914F6CDD1D;
    }
    void add(Bytes data) {
        std::size_t at = 0;
        for (; data.size() - at >= 8; at += 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, &data[at], 8);
            add(word);
        }
        std::uint64_t rest = data.size() - at;
        for (; at < data.size(); ++at) rest = rest << 8 | data[at];
        add(rest);
    }
    std::uint64_t value() const { return state_; }

  private:
    std::uint64_t state_ = 0x9E3779B97F4A7C15;
};

}  // namespace salvor::deep
