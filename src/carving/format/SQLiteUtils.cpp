#include "carving/format/SQLiteUtils.h"

namespace salvor {
namespace {

bool inside(Bytes data, std::size_t offset, std::size_t length) {
    return length <= data.size() && offset <= data.size() - length;
}

}  // namespace

std::optional<std::uint16_t> SQLiteUtils::convertToint16fromData(Bytes data, std::size_t location) {
    if (!inside(data, location, 2)) return std::nullopt;
    return static_cast<std::uint16_t>(data[location] << 8 | data[location + 1]);
}

std::optional<std::int32_t> SQLiteUtils::int32FromData(Bytes data, std::size_t location) {
    if (!inside(data, location, 4)) return std::nullopt;
    std::uint32_t value = 0;
    for (const std::uint8_t byte : data.subspan(location, 4)) value = value << 8 | byte;
    return static_cast<std::int32_t>(value);
}

std::optional<std::uint16_t> SQLiteUtils::NextFreeblockOffset(Bytes data, std::size_t offset) {
    return convertToint16fromData(data, offset);
}

std::optional<std::uint16_t> SQLiteUtils::FreeblockSize(Bytes data, std::size_t offset) {
    if (!inside(data, offset, 4)) return std::nullopt;
    return convertToint16fromData(data, offset + 2);
}

std::optional<Bytes> SQLiteUtils::FreeblockData(Bytes data, std::size_t offset) {
    const auto size = FreeblockSize(data, offset);
    if (!size || !inside(data, offset, *size)) return std::nullopt;
    return data.subspan(offset, *size);
}

std::optional<varInt> SQLiteUtils::convertRealVarintToIntfromByteArray(Bytes data,
                                                                       std::size_t index) {
    if (!inside(data, index, kVarintSpan)) return std::nullopt;
    return decodeVarint(data.data() + index);
}

std::optional<std::pair<std::int64_t, std::int32_t>> SQLiteUtils::convertVarintToIntfromByteArray(
    Bytes data, std::size_t index) {
    const auto decoded = convertRealVarintToIntfromByteArray(data, index);
    if (!decoded) return std::nullopt;
    return std::pair(decoded->value, decoded->position);
}

std::vector<std::uint8_t> SQLiteUtils::reverseData(Bytes data) {
    return {data.rbegin(), data.rend()};
}

bool SQLiteUtils::isBitSet(std::int32_t value, std::int32_t bitToCheck) const {
    const std::uint32_t bit = 1u << (static_cast<std::uint32_t>(bitToCheck) % 32u);
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) & bit) != 0;
}

}  // namespace salvor
