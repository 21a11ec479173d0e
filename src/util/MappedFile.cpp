#include "util/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "util/MappingGuard.h"

namespace salvor {
namespace {

// O_NOATIME is refused for files of other owners; the plain open is then the fall-back.
int openQuietly(const std::filesystem::path& path) {
    const int quiet = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOATIME | O_NONBLOCK);
    return quiet >= 0 ? quiet : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

}  // namespace

std::optional<MappedFile> MappedFile::open(const std::filesystem::path& path) {
    const int fd = openQuietly(path);
    if (fd < 0) return std::nullopt;
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    if (size == 0) {
        ::close(fd);
        return MappedFile(nullptr, 0);
    }
    void* address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    ::close(fd);
    if (address == MAP_FAILED) return std::nullopt;
    ::madvise(address, size, MADV_SEQUENTIAL);
    MappingGuard::add(address, size);
    return MappedFile(static_cast<const std::uint8_t*>(address), size);
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
}

MappedFile::~MappedFile() {
    if (data_ == nullptr) return;
    MappingGuard::remove(data_);
    // munmap takes a pointer to non-const, though it never writes.
    ::munmap(const_cast<std::uint8_t*>(data_), size_);
}

}  // namespace salvor
