#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/sample/SqliteFile.h"

namespace salvor {

/// An asset of a photo library.
struct SampleAsset {
    std::string directory;
    std::string file;
    bool trashed = false;
    std::int64_t created = 400000000;  ///< seconds since 2001, as the next
    std::int64_t modified = 400000060;
    int albums = 1;  ///< in how many albums it lies
};

/// Writes a photo library as the generations of the library have it: 0 with the table "Photo",
/// 1 to 5 with the join table of that layout, 6 with one that no scan asks for.
void writePhotoLibrary(const std::filesystem::path& path, int layoutCode,
                       const std::vector<SampleAsset>& assets, const SqliteLayout& layout = {});

}  // namespace salvor
