#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "util/Bytes.h"

namespace salvor {

/// Readers of single values in a byte buffer, big-endian as database files store them. A value
/// that does not lie wholly inside the buffer is absent.
struct dataUtils {
    static std::optional<std::int16_t> convertToint16(Bytes data, std::size_t location);
    static std::optional<std::uint8_t> getByte(Bytes data, std::size_t location);
    /// Index of the first `character`, -1 when the buffer does not hold it.
    static std::int64_t indexOfCharinData(Bytes data, std::uint8_t character);
    /// The IEEE 754 number in the first eight bytes.
    static std::optional<double> ConvertNSDataToDouble(Bytes data);
};

}  // namespace salvor
