#pragma once

#include <cstdlib>
#include <filesystem>

namespace salvor {

constexpr auto kNoRealData = "SALVOR_REAL_DATA names no folder of real files";

/// The folder of real databases that the environment variable SALVOR_REAL_DATA names; empty when it
/// is not set, and then tests skip. A file that is missing in it is a failure.
inline std::filesystem::path realData() {
    const char* given = std::getenv("SALVOR_REAL_DATA");
    return given != nullptr ? given : "";
}

}  // namespace salvor
