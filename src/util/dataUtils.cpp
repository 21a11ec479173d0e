#include "util/dataUtils.h"

#include <bit>
#include <cstring>

namespace salvor {

std::optional<std::int16_t> dataUtils::convertToint16(Bytes data, std::size_t location) {
    const Bytes value = slice(data, location, 2);
    if (value.size() < 2) return std::nullopt;
    return static_cast<std::int16_t>((value[0] << 8) | value[1]);
}

std::optional<std::uint8_t> dataUtils::getByte(Bytes data, std::size_t location) {
    if (location >= data.size()) return std::nullopt;
    return data[location];
}

std::int64_t dataUtils::indexOfCharinData(Bytes data, std::uint8_t character) {
    if (data.empty()) return -1;
    const auto* found =
        static_cast<const std::uint8_t*>(std::memchr(data.data(), character, data.size()));
    return found == nullptr ? -1 : found - data.data();
}

std::optional<double> dataUtils::ConvertNSDataToDouble(Bytes data) {
    if (data.size() < sizeof(double)) return std::nullopt;
    std::uint64_t bits = 0;
    for (const std::uint8_t byte : data.first(sizeof bits)) bits = (bits << 8) | byte;
    return std::bit_cast<double>(bits);
}

}  // namespace salvor
