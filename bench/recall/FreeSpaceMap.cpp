#include "bench/recall/FreeSpaceMap.h"

namespace salvor {

const char* toString(SpaceKind kind) {
    switch (kind) {
        case SpaceKind::Gap:
            return "gap";
        case SpaceKind::Freeblock:
            return "freeblock";
        case SpaceKind::FreePage:
            return "free page";
        case SpaceKind::Other:
            break;
    }
    return "other";
}

FreeSpaceMap::FreeSpaceMap(const std::string& bytes) : bytes_(bytes) {
    pageSize_ = static_cast<std::uint32_t>(number(16, 2));
    if (pageSize_ == 1) pageSize_ = 65536;
    lastRoot_ = static_cast<std::uint32_t>(number(52, 4));
    free_.resize(bytes.size() / pageSize_ + 1);
    walkFreeList();
}

std::uint64_t FreeSpaceMap::number(std::size_t offset, unsigned bytes) const {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < bytes; ++i) {
        const auto at = offset + i;
        value = value << 8U | (at < bytes_.size() ? static_cast<unsigned char>(bytes_[at]) : 0U);
    }
    return value;
}

void FreeSpaceMap::walkFreeList() {
    auto trunk = number(32, 4);
    for (std::size_t hops = 0; trunk != 0 && trunk < free_.size() && hops < free_.size(); ++hops) {
        const auto start = static_cast<std::size_t>((trunk - 1) * pageSize_);
        free_[static_cast<std::size_t>(trunk)] = true;
        const auto leaves = number(start + 4, 4);
        for (std::size_t i = 0; i < leaves && i < pageSize_ / 4; ++i) {
            const auto leaf = static_cast<std::size_t>(number(start + 8 + 4 * i, 4));
            if (leaf < free_.size()) free_[leaf] = true;
        }
        trunk = number(start, 4);
    }
}

Place FreeSpaceMap::at(std::size_t offset) const {
    Place place;
    place.page = static_cast<std::uint32_t>(offset / pageSize_ + 1);
    place.afterRoot = lastRoot_ != 0 && place.page > lastRoot_;
    if (place.page < free_.size() && free_[place.page]) {
        place.kind = SpaceKind::FreePage;
        return place;
    }
    return inTreePage(place, (place.page - 1) * std::size_t{pageSize_}, offset);
}

Place FreeSpaceMap::inTreePage(Place place, std::size_t pageStart, std::size_t offset) const {
    const auto type = number(pageStart, 1);
    const bool leaf = type == 10 || type == 13;
    if (!leaf && type != 2 && type != 5) return place;
    const auto pointers = pageStart + (leaf ? 8 : 12);
    const auto gapStart = pointers + 2 * number(pageStart + 3, 2);
    auto content = number(pageStart + 5, 2);
    if (content == 0) content = 65536;
    if (offset >= gapStart && offset < pageStart + content) {
        place.kind = SpaceKind::Gap;
        return place;
    }
    auto block = number(pageStart + 1, 2);
    for (std::size_t hops = 0; block != 0 && block < pageSize_ && hops < pageSize_ / 4; ++hops) {
        const auto start = pageStart + block;
        if (offset >= start && offset < start + number(start + 2, 2)) {
            place.kind = SpaceKind::Freeblock;
            place.freeblock = start;
            return place;
        }
        block = number(start, 2);
    }
    return place;
}

}  // namespace salvor
