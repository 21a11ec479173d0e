#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backup/MDFileInfo.h"
#include "util/Bytes.h"

namespace salvor {

/// Reader of the binary file index of a backup (Manifest.mbdb): the magic "mbdb", two bytes of
/// version, then records without count or padding, all integers big-endian. A record cut short by
/// the end of the file is dropped. Memory grows with the file's own size alone.
class ParseMbdb {
  public:
    /// The records in file order, or nothing when the file cannot be read, is empty or lacks the
    /// magic.
    static std::optional<std::vector<MDFileInfo>> ProcessMbdbFile(
        const std::filesystem::path& path);
    /// How the reading of an index ended.
    enum class End { NoIndex, Whole, CutShort };
    /// As above over bytes in memory, one record at a time; `NoIndex` without the magic.
    static End visit(Bytes index, const std::function<void(MDFileInfo&&)>& take);

    /// Lower-case hexadecimal SHA-1 of the first n bytes of `text`, where n is the number of
    /// UTF-16 units of the text. Kept: name-hash-prefix.
    static std::string digest(const std::string& text);
    /// The name under which a backup stores the file `fileName` of `domain`.
    static std::string storedName(const std::string& domain, const std::string& fileName);

    static bool isPlistData(std::string_view extension);
    static bool isDBData(std::string_view extension);
    static bool isPictureData(std::string_view extension);
    static bool isVideoData(std::string_view extension);
};

}  // namespace salvor
