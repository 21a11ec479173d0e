#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "carving/format/DatabaseLayout.h"

namespace salvor::deep {

/// What was found of one table.
struct TableFacts {
    std::string name;
    std::vector<std::string> columns;
    std::vector<std::string> types;  ///< as declared
    bool dropped = false;
    bool internal = false;  ///< SQLite's own
    std::uint64_t live = 0;
    std::uint64_t deleted = 0;  ///< of a dropped table all that was found
    std::uint64_t earlier = 0;
    std::uint64_t fragments = 0;
    std::uint64_t certain = 0;  ///< of the deleted ones
    std::uint64_t likely = 0;
    std::uint64_t possible = 0;
    /// Highest row id handed out less the rows that live: how many rows once were and are not;
    /// 0 where row ids do not tell.
    std::uint64_t gone = 0;
};

/// What a file tells about what is left of its deleted rows, and why no more is.
struct Facts {
    std::uint32_t pageSize = 0;
    std::uint32_t pages = 0;
    std::uint32_t freePages = 0;
    TextEncoding encoding = TextEncoding::Utf8;
    bool autoVacuum = false;
    bool incrementalVacuum = false;
    std::uint64_t logFrames = 0;
    std::uint64_t logFramesInUse = 0;
    std::uint64_t journalPages = 0;
    bool journalWiped = false;
    std::uint64_t freeBytes = 0;   ///< unallocated ones of the database as a reader sees it
    std::uint64_t zeroBytes = 0;   ///< those of them that are zero
    std::uint64_t freedBytes = 0;  ///< of freeblocks, their headers aside, and of free pages
    std::uint64_t freedZeroBytes = 0;
    bool cut = false;  ///< the file is shorter than its header says
    std::vector<TableFacts> tables;

    /// Freed bytes are zeroed when they are freed: nothing else stands in freeblocks and free
    /// pages.
    bool secureDeleteSeen() const;
    /// The same in sentences for people.
    std::vector<std::string> sentences() const;
};

}  // namespace salvor::deep
