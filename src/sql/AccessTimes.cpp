#include "sql/AccessTimes.h"

#include <cerrno>
#include <fcntl.h>
#include <sqlite3.h>

namespace salvor {
namespace {

#ifdef O_NOATIME
int openQuietly(const char* path, int flags, int mode) {
    if ((flags & O_ACCMODE) == O_RDONLY) {
        const int file = ::open(path, flags | O_NOATIME, mode);
        if (file >= 0 || errno != EPERM) return file;
    }
    return ::open(path, flags, mode);
}

bool install() {
    sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
    if (vfs == nullptr || vfs->iVersion < 3 || vfs->xSetSystemCall == nullptr) return false;
    return vfs->xSetSystemCall(vfs, "open", reinterpret_cast<sqlite3_syscall_ptr>(openQuietly)) ==
           SQLITE_OK;
}
#else
bool install() {
    return false;
}
#endif

}  // namespace

void keepAccessTimes() {
    [[maybe_unused]] static const bool installed = install();
}

}  // namespace salvor
