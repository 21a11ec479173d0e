#include "carving/format/WalFile.h"

#include "carving/format/BigEndian.h"
#include "carving/format/DatabaseLayout.h"

namespace salvor {
namespace {

constexpr std::size_t kHeader = 32;
constexpr std::size_t kFrameHeader = 24;
constexpr std::uint32_t kMagic = 0x377F0682;

/// The running checksum of a log: 32-bit words in the byte order that the magic number names.
class WalChecksum {
  public:
    explicit WalChecksum(bool bigEndianWords) : bigEndian_(bigEndianWords) {}

    void add(Bytes data) {
        for (std::size_t i = 0; i + 8 <= data.size(); i += 8) {
            first_ += word(&data[i]) + second_;
            second_ += word(&data[i + 4]) + first_;
        }
    }
    bool equals(Bytes file, std::size_t at) const {
        return bigEndian32(file, at) == first_ && bigEndian32(file, at + 4) == second_;
    }

  private:
    std::uint32_t word(const std::uint8_t* p) const {
        const std::uint32_t big =
            std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
        return bigEndian_ ? big : __builtin_bswap32(big);
    }

    bool bigEndian_;
    std::uint32_t first_ = 0;
    std::uint32_t second_ = 0;
};

/// How many frames from the first a reader would take.
std::size_t committedFrames(Bytes file, const WalFile& log) {
    const std::uint32_t magic = bigEndian32(file, 0);
    WalChecksum sum((magic & 1u) != 0);
    sum.add(slice(file, 0, 24));
    if ((magic & ~1u) != kMagic || !sum.equals(file, 24)) return 0;
    std::size_t committed = 0;
    for (std::size_t i = 0; i < log.frames.size(); ++i) {
        const std::size_t at = log.frames[i].offset - kFrameHeader;
        if (bigEndian<8>(file, at + 8) != bigEndian<8>(file, 16)) break;
        sum.add(slice(file, at, 8));
        sum.add(slice(file, log.frames[i].offset, log.pageSize));
        if (!sum.equals(file, at + 16)) break;
        if (log.frames[i].commitSize != 0) committed = i + 1;
    }
    return committed;
}

}  // namespace

std::optional<WalFile> WalFile::read(Bytes file, std::uint32_t pageSize) {
    if (file.size() < kHeader + kFrameHeader) return std::nullopt;
    WalFile log;
    const bool magic = (bigEndian32(file, 0) & ~1u) == kMagic;
    const std::uint32_t stored = bigEndian32(file, 8);
    log.pageSize = magic && isPageSize(stored) ? stored : pageSize;
    if (!isPageSize(log.pageSize) || (pageSize != 0 && pageSize != log.pageSize))
        return std::nullopt;
    const std::size_t step = kFrameHeader + log.pageSize;
    std::uint64_t salts = 0;
    for (std::size_t at = kHeader; file.size() - at >= step; at += step) {
        const std::uint64_t own = bigEndian<8>(file, at + 8);
        if (log.frames.empty() || own != salts) ++log.generations;
        salts = own;
        log.frames.push_back({at + kFrameHeader, bigEndian32(file, at), bigEndian32(file, at + 4)});
    }
    log.committed = committedFrames(file, log);
    return log;
}

}  // namespace salvor
