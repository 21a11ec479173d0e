#pragma once

#include <cstdint>
#include <vector>

#include "util/Bytes.h"

namespace salvor {

/// A page as it was before the transaction that a rollback journal belongs to.
struct JournalPage {
    std::uint64_t offset = 0;  ///< of the page's bytes in the file
    std::uint32_t page = 0;
};

/// The pages of a rollback journal, also of one whose header was wiped when its transaction ended.
/// SQLite file format, "The Rollback Journal".
struct JournalFile {
    std::vector<JournalPage> pages;
    bool headerWiped = false;

    /// `pageSize` is the database's. A file that holds no page gives none.
    static JournalFile read(Bytes file, std::uint32_t pageSize);
};

}  // namespace salvor
