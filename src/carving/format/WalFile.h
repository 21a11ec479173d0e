#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "util/Bytes.h"

namespace salvor {

/// One frame of a write-ahead log: a page as it was written once.
struct WalFrame {
    std::uint64_t offset = 0;  ///< of the page's bytes in the file
    std::uint32_t page = 0;
    std::uint32_t commitSize = 0;  ///< pages of the database after this frame's commit; 0 inside
};

/// A write-ahead log: every frame that the file holds, those of earlier generations and behind the
/// last commit as well. SQLite file format, "The Write-Ahead Log".
struct WalFile {
    std::uint32_t pageSize = 0;
    std::vector<WalFrame> frames;
    /// How many frames from the first count for a reader: salts of the header, checksums that
    /// follow one from the other, up to the last commit.
    std::size_t committed = 0;
    std::size_t generations = 0;  ///< runs of frames with salts of their own

    /// `pageSize` is the database's, 0 when it is not known; a log for pages of another size, or a
    /// file shorter than one frame, is none. A damaged header leaves frames that nobody counts.
    static std::optional<WalFile> read(Bytes file, std::uint32_t pageSize);
};

}  // namespace salvor
