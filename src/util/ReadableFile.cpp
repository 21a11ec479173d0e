#include "util/ReadableFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <span>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace salvor {
namespace {

constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
// Small enough that a cancel is heeded soon on a slow disk.
constexpr std::size_t kKernelPiece = std::size_t{4} << 20;
constexpr std::size_t kPiece = std::size_t{1} << 18;

FileCopy failed(FileCopy::End end) {
    return {end, std::generic_category().message(errno)};
}

bool writeWhole(int to, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(to, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

/// Goes on behind what is copied already, which is where both descriptors stand.
FileCopy copyThroughMemory(int from, int to, off_t offset, const FileCopyOptions& options) {
    thread_local std::array<char, kPiece> buffer;
    for (;;) {
        if (options.cancelled && options.cancelled())
            return {FileCopy::End::Cancelled, "cancelled"};
        const ssize_t count = ::pread(from, buffer.data(), buffer.size(), offset);
        if (count == 0) return {};
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return failed(FileCopy::End::Unreadable);
        if (!writeWhole(to, std::span(buffer).first(static_cast<std::size_t>(count))))
            return failed(FileCopy::End::Unwritten);
        offset += count;
    }
}

FileCopy copyPieces(int from, int to, const FileCopyOptions& options) {
    if (::ioctl(to, FICLONE, from) == 0) return {};
    for (off_t offset = 0;;) {
        if (options.cancelled && options.cancelled())
            return {FileCopy::End::Cancelled, "cancelled"};
        off_t next = offset;
        const ssize_t count = ::copy_file_range(from, &next, to, nullptr, kKernelPiece, 0);
        if (count == 0 && offset > 0) return {};
        if (count < 0 && errno == EINTR) continue;
        // The kernel does not copy between all files, takes those of an invented size for empty and
        // does not tell which side failed.
        if (count <= 0) return copyThroughMemory(from, to, offset, options);
        offset += count;
    }
}

/// A date that the target does not take is no failure of the copy.
void keepDate(int from, int to, const std::optional<std::int64_t>& modified) {
    struct stat info {};
    if (modified)
        info.st_mtim.tv_sec = *modified;
    else if (::fstat(from, &info) != 0)
        return;
    const std::array times{timespec{0, UTIME_OMIT}, info.st_mtim};
    ::futimens(to, times.data());
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

std::optional<std::size_t> ReadableFile::readHead(std::span<std::uint8_t> head) const {
    const ssize_t count = ::pread(descriptor_, head.data(), head.size(), 0);
    if (count < 0) return std::nullopt;
    return static_cast<std::size_t>(count);
}

FileCopy ReadableFile::copyTo(const std::filesystem::path& target,
                              const FileCopyOptions& options) const {
    constexpr mode_t kOwnerAlone = 0600;
    const int to = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerAlone);
    if (to < 0) return failed(FileCopy::End::Unwritten);
    auto copy = copyPieces(descriptor_, to, options);
    if (copy) keepDate(descriptor_, to, options.modified);
    if (::close(to) != 0 && copy) copy = failed(FileCopy::End::Unwritten);
    if (!copy) ::unlink(target.c_str());
    return copy;
}

bool ReadableFile::sharesBlocksWith(const std::filesystem::path& folder) const {
    const int probe = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (probe < 0) return false;
    const bool shared = ::ioctl(probe, FICLONE, descriptor_) == 0;
    ::close(probe);
    return shared;
}

}  // namespace salvor
