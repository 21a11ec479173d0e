#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "backup/FileProperty.h"

namespace salvor {

/// What the name of a backed-up file says of its content.
enum class RecordType : std::int32_t {
    NotRegular = 1,  ///< directory, link or other
    PropertyList = 2,
    Picture = 3,
    AudioVideo = 4,
    Database = 5,
    Other = 6,
};

/// One record of a backup's index. Fields stand in the order in which the index stores them;
/// integers are unsigned and keep the widths of the index, except that a file's size is kept
/// modulo 2^32. Kept: sizes-32-bit. Texts that are binary in the file (`strDataHash`,
/// `strUnknown1`) are cut at their first zero byte or read "<null>".
struct MDFileInfo : FileProperty {
    std::string strlinkTarget;
    std::string strDataHash;
    std::string strUnknown1;        ///< per-file key data
    std::string wrappedKey;         ///< the same, as it is: class and wrapped key
    std::uint32_t intMode = 0;      ///< Unix mode; the file type stands in the bits 0xE000
    std::uint32_t intUnknown2 = 0;  ///< first half of the inode number
    std::uint32_t intUnknown3 = 0;  ///< second half of the inode number
    std::uint32_t intUserID = 0;
    std::uint32_t intGroupID = 0;
    std::uint32_t intmTime = 0;  ///< Unix seconds, as the two below
    std::uint32_t intaTime = 0;
    std::uint32_t intcTime = 0;
    std::uint32_t intfileLen = 0;  ///< bytes, modulo 2^32
    std::uint32_t intflag = 0;     ///< protection class
    std::uint32_t intNumberofProps = 0;
    /// Extended properties; made only when the record counts at least one.
    std::optional<std::map<std::string, std::string>> dicProperties;

    std::uint32_t intStartOffset = 0;
    std::string strHash;  ///< stored name
    salvor::RecordType RecordType = salvor::RecordType::NotRegular;
};

}  // namespace salvor
