#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "backup/PrivateFolder.h"

namespace salvor {

/// Keeps private copies of files of one backup, outside of it: in memory as long as that has room,
/// else on a disk. Its folders (0700) are made when they are needed and go with the object. Any
/// number of threads may ask.
class PrivateStore {
  public:
    explicit PrivateStore(std::filesystem::path backup) : backup_(std::move(backup)) {}

    /// Where a new file of this name and size may be written, in a folder of its own; empty when
    /// there is no place.
    std::filesystem::path placeFor(const std::string& name, std::uint64_t bytes);

  private:
    /// A folder in one of `parents`, made once.
    struct Room {
        bool tried = false;
        std::unique_ptr<PrivateFolder> folder;
    };
    const PrivateFolder* open(Room& room, const std::vector<std::filesystem::path>& parents) const;

    std::filesystem::path backup_;
    std::mutex mutex_;
    std::uint64_t files_ = 0;
    Room memory_;
    Room disk_;
};

}  // namespace salvor
