#include "carving/format/JournalFile.h"

#include <optional>

#include "carving/format/BigEndian.h"

namespace salvor {
namespace {

constexpr std::uint64_t kMagic = 0xD9D505F920A163D7;
constexpr std::uint32_t kSector = 512;
// A page number beyond this is no page of any database.
constexpr std::uint32_t kLargestPage = 0xFFFFFFFE;

std::uint32_t sectorSize(Bytes file, std::size_t header) {
    const std::uint32_t size = bigEndian32(file, header + 20);
    const bool sound = size >= 32 && size <= 65536 && (size & (size - 1)) == 0;
    return sound ? size : kSector;
}

/// The checksum of a page without the journal's random number: every 200th byte from the end.
std::uint32_t pageSum(Bytes page) {
    std::uint32_t sum = 0;
    for (std::size_t at = page.size(); at > 200;) {
        at -= 200;
        sum += page[at];
    }
    return sum;
}

/// The random number that makes the checksum of the record at `at` right.
std::optional<std::uint32_t> randomOf(Bytes file, std::size_t at, std::uint32_t pageSize) {
    const std::size_t step = std::size_t{pageSize} + 8;
    if (file.size() < step || at > file.size() - step) return std::nullopt;
    const std::uint32_t page = bigEndian32(file, at);
    if (page == 0 || page > kLargestPage || bigEndian<8>(file, at) == kMagic) return std::nullopt;
    return bigEndian32(file, at + 4 + pageSize) - pageSum(slice(file, at + 4, pageSize));
}

/// Takes the pages of one segment from `at` on. The random number is the header's, or what the
/// first page's checksum makes it; where it changes, two pages that agree, or the
/// last one, are what an older transaction left behind the end of this one. Returns where the
/// segment ends.
std::size_t readSegment(Bytes file, std::size_t at, std::uint32_t pageSize,
                        std::optional<std::uint32_t> random, JournalFile& journal) {
    const std::size_t step = std::size_t{pageSize} + 8;
    for (auto own = randomOf(file, at, pageSize); own; own = randomOf(file, at, pageSize)) {
        const auto following = randomOf(file, at + step, pageSize);
        if (random && *own != *random && following && following != own) break;
        random = own;
        journal.pages.push_back({at + 4, bigEndian32(file, at)});
        at += step;
    }
    return at;
}

}  // namespace

JournalFile JournalFile::read(Bytes file, std::uint32_t pageSize) {
    JournalFile journal;
    std::size_t header = 0;
    while (file.size() >= kSector && header <= file.size() - kSector) {
        const bool standing = bigEndian<8>(file, header) == kMagic;
        if (!standing && header != 0) break;
        journal.headerWiped |= !standing;
        const std::uint32_t sector = standing ? sectorSize(file, header) : kSector;
        std::optional<std::uint32_t> random;
        if (standing) random = bigEndian32(file, header + 12);
        const std::size_t end = readSegment(file, header + sector, pageSize, random, journal);
        header = (end + sector - 1) / sector * sector;
    }
    return journal;
}

}  // namespace salvor
