#include "util/ReadableFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace salvor {
namespace {

constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
constexpr std::size_t kKernelPiece = std::size_t{64} << 20;
constexpr std::size_t kPiece = std::size_t{1} << 18;

std::string lastError() {
    return std::generic_category().message(errno);
}

/// Bytes copied of one piece, 0 at the end of the file, or -1 with `errno` set.
using CopyPiece = ssize_t (*)(int from, int to, off_t offset);

ssize_t copyInKernel(int from, int to, off_t offset) {
    return ::copy_file_range(from, &offset, to, nullptr, kKernelPiece, 0);
}

ssize_t copyThroughMemory(int from, int to, off_t offset) {
    thread_local std::array<char, kPiece> buffer;
    const ssize_t count = ::pread(from, buffer.data(), buffer.size(), offset);
    for (ssize_t written = 0; written < count;) {
        const ssize_t more =
            ::write(to, buffer.data() + written, static_cast<std::size_t>(count - written));
        if (more < 0 && errno == EINTR) continue;
        if (more <= 0) return -1;
        written += more;
    }
    return count;
}

// The errors with which the kernel says that it cannot copy between these two files.
bool otherWayHelps(int error) {
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP ||
           error == EPERM;
}

std::string copyPieces(int from, int to, const std::function<bool()>& cancelled) {
    if (::ioctl(to, FICLONE, from) == 0) return "";
    CopyPiece copy = copyInKernel;
    for (off_t offset = 0;;) {
        if (cancelled && cancelled()) return "cancelled";
        const ssize_t count = copy(from, to, offset);
        if (count > 0) {
            offset += count;
        } else if (count == 0 && (offset > 0 || copy == copyThroughMemory)) {
            return "";
        } else if (count == 0 || (offset == 0 && copy == copyInKernel && otherWayHelps(errno))) {
            // Some file systems have a size of their own invention, so that the kernel sees none.
            copy = copyThroughMemory;
        } else if (errno != EINTR) {
            return lastError();
        }
    }
}

}  // namespace

std::optional<ReadableFile> ReadableFile::open(const std::filesystem::path& path) {
    auto file = opened(AT_FDCWD, path.c_str(), kFlags);
    struct stat info {};
    if (!file || ::fstat(file->descriptor_, &info) != 0 || !S_ISREG(info.st_mode))
        return std::nullopt;
    return file;
}

std::optional<ReadableFile> ReadableFile::openIn(int folder, const char* path) {
    return opened(folder, path, kFlags | O_NOFOLLOW);
}

std::optional<ReadableFile> ReadableFile::opened(int folder, const char* path, int flags) {
    // O_NOATIME is refused for files of other owners; the plain open is then the fall-back.
    int descriptor = ::openat(folder, path, flags | O_NOATIME);
    if (descriptor < 0 && errno == EPERM) descriptor = ::openat(folder, path, flags);
    if (descriptor < 0) return std::nullopt;
    return ReadableFile(descriptor);
}

ReadableFile::ReadableFile(ReadableFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

ReadableFile& ReadableFile::operator=(ReadableFile&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

ReadableFile::~ReadableFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

std::size_t ReadableFile::readHead(std::span<std::uint8_t> head) const {
    const ssize_t count = ::pread(descriptor_, head.data(), head.size(), 0);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

std::string ReadableFile::copyTo(const std::filesystem::path& target,
                                 const std::function<bool()>& cancelled) const {
    const int to = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (to < 0) return lastError();
    std::string failure = copyPieces(descriptor_, to, cancelled);
    if (::close(to) != 0 && failure.empty()) failure = lastError();
    if (!failure.empty()) ::unlink(target.c_str());
    return failure;
}

}  // namespace salvor
