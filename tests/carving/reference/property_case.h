#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "carving/TableCarver.h"
#include "plain_buffer.h"
#include "plain_pattern.h"

namespace salvor::reference {

/// One signatures file, one database file and the ways in which it is carved.
struct PropertyCase {
    std::string signatures;
    std::vector<PlainPattern> patterns;  ///< what the file says of the table
    Buffer file;
    std::vector<TableCarveOptions> runs;
};

inline constexpr const char* kCaseDomain = "HomeDomain";
inline constexpr const char* kCaseDatabase = "test.db";
inline constexpr const char* kCaseTable = "T";

/// The same case for the same seed.
PropertyCase makeCase(std::uint64_t seed);

}  // namespace salvor::reference
