#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace salvor {

/// A view of raw bytes. It owns nothing and lives as long as the mapping or buffer behind it.
using Bytes = std::span<const std::uint8_t>;

/// The part of `data` from `offset`, at most `length` bytes long; empty when `offset` lies past
/// the end. Checks by subtraction, so that no sum can wrap.
inline Bytes slice(Bytes data, std::size_t offset, std::size_t length) {
    if (offset >= data.size()) return {};
    return data.subspan(offset, length < data.size() - offset ? length : data.size() - offset);
}

}  // namespace salvor
