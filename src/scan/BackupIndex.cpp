#include "scan/BackupIndex.h"

#include <array>

namespace salvor {

const char* toString(EntryKind kind) {
    constexpr std::array kNames{"file", "folder", "link", "other"};
    return kNames.at(static_cast<std::size_t>(kind));
}

std::string keyWithClass(std::string key, std::uint32_t protectionClass) {
    constexpr std::size_t kWrappedKey = 40;
    if (key.size() != kWrappedKey) return key;
    std::string number;
    for (unsigned shift = 0; shift < 32; shift += 8)
        number += static_cast<char>(static_cast<unsigned char>(protectionClass >> shift));
    return number + key;
}

IndexCounts BackupIndex::count() const {
    IndexCounts counts;
    std::array<std::size_t*, 4> kinds{&counts.files, &counts.folders, &counts.links,
                                      &counts.others};
    for (std::size_t i = 0; i < size(); ++i) ++*kinds.at(static_cast<std::size_t>(entry(i).kind));
    return counts;
}

}  // namespace salvor
