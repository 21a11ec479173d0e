#include "backup/PrivateFolder.h"

#include <cstdlib>
#include <fcntl.h>
#include <linux/magic.h>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "backup/BackupStore.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "run-";

/// Descriptor of a folder that carries a lock of ours, -1 when it cannot be had.
int lockFolder(const fs::path& folder, int how) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0 || ::flock(descriptor, how) == 0) return descriptor;
    ::close(descriptor);
    return -1;
}

/// Whether nobody else can put things into the folder's place.
bool isOurs(int folder) {
    struct stat info {};
    return ::fstat(folder, &info) == 0 && info.st_uid == ::geteuid();
}

bool isInMemory(const fs::path& folder) {
    struct statfs system {};
    return folder.is_absolute() && ::statfs(folder.c_str(), &system) == 0 &&
           (system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC);
}

std::string ownName() {
    return "salvor-" + std::to_string(::getuid());
}

void removeWhatNobodyOwns(const fs::path& parent) {
    std::error_code failed;
    std::vector<fs::path> abandoned;
    for (fs::directory_iterator entry(parent, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        if (!entry->path().filename().string().starts_with(kPrefix)) continue;
        const int lock = lockFolder(entry->path(), LOCK_EX | LOCK_NB);
        if (lock < 0) continue;
        ::close(lock);
        abandoned.push_back(entry->path());
    }
    for (const auto& folder : abandoned) fs::remove_all(folder, failed);
}

}  // namespace

std::unique_ptr<PrivateFolder> PrivateFolder::make(const fs::path& parent) {
    std::error_code failed;
    fs::create_directories(parent, failed);
    if (failed) return nullptr;
    // The parent's lock keeps others from taking a folder that is made but not locked yet.
    const int gate = lockFolder(parent, LOCK_EX);
    if (gate < 0 || !isOurs(gate)) {
        if (gate >= 0) ::close(gate);
        return nullptr;
    }
    removeWhatNobodyOwns(parent);
    std::string name = (parent / (std::string(kPrefix) + "XXXXXX")).string();
    const bool made = ::mkdtemp(name.data()) != nullptr;
    const int lock = made ? lockFolder(name, LOCK_EX | LOCK_NB) : -1;
    ::close(gate);
    if (!made) return nullptr;
    return std::unique_ptr<PrivateFolder>(new PrivateFolder(name, lock));
}

std::vector<fs::path> PrivateFolder::usualParents() {
    std::vector<fs::path> parents;
    const char* cache = std::getenv("XDG_CACHE_HOME");
    // A relative path there is to be ignored.
    const bool named = cache != nullptr && *cache == '/';
    parents.push_back(named ? fs::path(cache) / "salvor"
                            : BackupStore::homeFolder() / ".cache/salvor");
    std::error_code failed;
    const auto system = fs::temp_directory_path(failed);
    if (!failed) parents.push_back(system / ownName());
    return parents;
}

std::vector<fs::path> PrivateFolder::memoryParents() {
    std::vector<fs::path> parents;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && isInMemory(runtime)) parents.push_back(fs::path(runtime) / "salvor");
    if (isInMemory("/dev/shm")) parents.push_back(fs::path("/dev/shm") / ownName());
    return parents;
}

void PrivateFolder::removeLeftovers() {
    auto parents = usualParents();
    for (auto& parent : memoryParents()) parents.push_back(std::move(parent));
    for (const auto& parent : parents) {
        const int gate = lockFolder(parent, LOCK_EX | LOCK_NB);
        if (gate < 0) continue;
        if (isOurs(gate)) removeWhatNobodyOwns(parent);
        ::close(gate);
    }
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    if (lock_ >= 0) ::close(lock_);
}

}  // namespace salvor
