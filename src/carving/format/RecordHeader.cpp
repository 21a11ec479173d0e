#include "carving/format/RecordHeader.h"

#include "carving/format/Varint.h"

namespace salvor {

bool readTypes(Bytes data, std::size_t at, std::size_t end, std::vector<std::uint64_t>& types) {
    if (end > data.size()) return false;
    while (at < end) {
        const Varint type = readVarint(data.first(end), at);
        if (type.length == 0 || serialClass(type.value) == kReserved) return false;
        types.push_back(type.value);
        at += type.length;
    }
    return true;
}

std::uint64_t bodyLength(const std::vector<std::uint64_t>& types) {
    // A type is below 2^64 and its length below 2^63, so that two lengths fit; the sum stops there.
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62;
    std::uint64_t length = 0;
    for (const std::uint64_t type : types) {
        length += serialLength(type);
        if (length > kMost) return kMost;
    }
    return length;
}

bool Record::read(Bytes whole) {
    payload = whole;
    types.clear();
    const Varint length = readVarint(whole, 0);
    if (length.length == 0 || length.value < length.length || length.value > whole.size())
        return false;
    body = static_cast<std::size_t>(length.value);
    return readTypes(whole, length.length, body, types) && bodyLength(types) <= whole.size() - body;
}

}  // namespace salvor
