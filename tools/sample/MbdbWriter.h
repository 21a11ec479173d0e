#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace salvor {

/// One record of a Manifest.mbdb as written: five strings (absent is FF FF), forty fixed bytes,
/// the properties.
struct MbdbRecord {
    std::string domain;
    std::string path;
    std::optional<std::string> linkTarget;
    std::optional<std::string> digest;         ///< 20 raw bytes
    std::optional<std::string> encryptionKey;  ///< raw bytes
    std::uint16_t mode = 0100644;
    std::uint64_t inode = 0;
    std::uint32_t userId = 501;
    std::uint32_t groupId = 501;
    std::uint32_t modified = 0;  ///< Unix seconds, as the next two
    std::uint32_t statusChanged = 0;
    std::uint32_t born = 0;
    std::uint64_t size = 0;
    std::uint8_t protectionClass = 0;
    std::vector<std::pair<std::string, std::string>> properties;
};

/// The bytes of an index file: magic, version 5.0, the records. Integers are big-endian.
std::string mbdbBytes(const std::vector<MbdbRecord>& records);

}  // namespace salvor
