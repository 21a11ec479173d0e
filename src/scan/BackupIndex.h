#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "util/Text.h"

namespace salvor {

/// What an entry of an index stands for.
enum class EntryKind : std::uint8_t { File, Folder, Link, Other };

/// "file", "folder", "link" or "other".
const char* toString(EntryKind kind);

/// An entry of a backup's index: where it belongs on the device.
struct IndexEntry {
    Text domain;
    Text path;  ///< below the domain; "" for the domain's own folder
    Text storedName;
    EntryKind kind = EntryKind::File;
};

/// What the index tells of an entry beside its place. Times are Unix seconds.
struct EntryDetails {
    std::uint32_t mode = 0;  ///< Unix mode; 0 when the metadata cannot be read
    std::int64_t size = 0;   ///< bytes, as told; wrong for some databases
    std::int64_t modified = 0;
    std::int64_t changed = 0;
    std::int64_t born = 0;
    std::uint32_t protectionClass = 0;
    Text linkTarget;
    std::string key;  ///< 44 bytes, class and wrapped key; "" for what is not encrypted
};

/// A wrapped key with its protection class before it, where it comes without one.
std::string keyWithClass(std::string key, std::uint32_t protectionClass);

/// How many entries of an index are what.
struct IndexCounts {
    std::size_t files = 0;
    std::size_t folders = 0;
    std::size_t links = 0;
    std::size_t others = 0;
};

/// The index of a backup: every file, folder and link of the device that was backed up. Any number
/// of threads may ask.
class BackupIndex {
  public:
    BackupIndex() = default;
    BackupIndex(const BackupIndex&) = delete;
    BackupIndex& operator=(const BackupIndex&) = delete;
    virtual ~BackupIndex() = default;

    virtual std::size_t size() const = 0;
    virtual IndexEntry entry(std::size_t number) const = 0;
    /// Read from the index anew.
    virtual EntryDetails details(std::size_t number) const = 0;
    virtual std::optional<std::size_t> find(const std::string& storedName) const = 0;
    virtual std::optional<std::size_t> find(const std::string& domain,
                                            const std::string& path) const = 0;
    /// Why the index could not be read to its end, or "".
    virtual const std::string& damage() const = 0;

    IndexCounts count() const;
};

}  // namespace salvor
