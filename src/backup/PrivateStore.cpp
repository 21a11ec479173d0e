#include "backup/PrivateStore.h"

#include <system_error>

#include "backup/BackupPaths.h"

namespace salvor {
namespace {

/// Of a file system in memory so much is left to everybody else.
constexpr std::uint64_t kLeftFree = std::uint64_t{256} << 20;

bool hasRoom(const std::filesystem::path& folder, std::uint64_t bytes) {
    std::error_code failed;
    const auto space = std::filesystem::space(folder, failed);
    return !failed && space.available > kLeftFree && bytes < space.available - kLeftFree;
}

}  // namespace

const PrivateFolder* PrivateStore::open(Room& room,
                                        const std::vector<std::filesystem::path>& parents) const {
    if (!room.tried) {
        room.tried = true;
        for (const auto& parent : parents) {
            if (liesInside(parent, backup_)) continue;
            room.folder = PrivateFolder::make(parent);
            if (room.folder != nullptr) break;
        }
    }
    return room.folder.get();
}

std::filesystem::path PrivateStore::placeFor(const std::string& name, std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    const auto* room = open(memory_, PrivateFolder::memoryParents());
    if (room == nullptr || !hasRoom(room->path(), bytes))
        room = open(disk_, PrivateFolder::usualParents());
    if (room == nullptr) return {};
    const auto folder = room->path() / std::to_string(++files_);
    std::error_code failed;
    std::filesystem::create_directory(folder, failed);
    return failed ? std::filesystem::path() : folder / name;
}

}  // namespace salvor
