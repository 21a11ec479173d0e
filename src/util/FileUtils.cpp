#include "util/FileUtils.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

#include "util/FdStream.h"

namespace salvor {
namespace {

DIR* openFolder(const std::filesystem::path& folder) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    int fd = ::open(folder.c_str(), flags | O_NOATIME);
    if (fd < 0) fd = ::open(folder.c_str(), flags);  // O_NOATIME is the owner's alone
    if (fd < 0) return nullptr;
    DIR* stream = ::fdopendir(fd);
    if (stream == nullptr) ::close(fd);
    return stream;
}

std::string causeOf(int error) {
    return std::generic_category().message(error);
}

using Writing = std::function<bool(std::ostream&)>;

constexpr mode_t kOwnerAlone = 0600;

/// Brings a file to the disk in pieces, since one long wait could not be ended; 0 or the error.
int sync(int fd, const std::stop_token& stop) {
    constexpr off_t kPiece = off_t{8} << 20;
    constexpr unsigned kWritten =
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    const off_t size = ::lseek(fd, 0, SEEK_END);
    for (off_t done = 0; done < size; done += kPiece) {
        if (stop.stop_requested()) return ECANCELED;
        if (::sync_file_range(fd, done, kPiece, kWritten) != 0) break;  // as one piece, then
    }
    return ::fsync(fd) == 0 ? 0 : errno;
}

// Has everything written and closes, also when `write` throws; 0 or the error.
int writeAndClose(int fd, const Writing& write, const std::stop_token* synced) {
    int error = 0;
    try {
        FdStream out(fd);
        const bool wanted = write(out);
        out.flush();
        error = out.errorNumber();
        if (error == 0 && !wanted) error = ECANCELED;
    } catch (...) {
        ::close(fd);
        throw;
    }
    if (error == 0 && synced != nullptr) error = sync(fd, *synced);
    if (::close(fd) != 0 && error == 0) error = errno;
    return error;
}

std::string writeInPlace(const std::filesystem::path& path, const Writing& write) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return causeOf(errno);
    const int error = writeAndClose(fd, write, nullptr);
    return error == 0 ? "" : causeOf(error);
}

bool isC0Control(char c) {
    return (c >= 0 && c < 0x20) || c == 0x7F;
}

// U+0080 to U+009F, which UTF-8 writes as C2 80 to C2 9F.
bool isC1Control(std::string_view text) {
    if (text.size() < 2 || text[0] != '\xC2') return false;
    const auto second = static_cast<unsigned char>(text[1]);
    return second >= 0x80 && second <= 0x9F;
}

}  // namespace

std::vector<FileUtils::Entry> FileUtils::entriesOf(const std::filesystem::path& folder) {
    std::vector<Entry> entries;
    DIR* stream = openFolder(folder);
    if (stream == nullptr) return entries;
    while (const dirent* found = ::readdir(stream)) {
        const std::string_view name = found->d_name;
        if (name == "." || name == "..") continue;
        struct stat info {};
        Entry entry{.name = std::string(name)};
        if (::fstatat(::dirfd(stream), found->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0) {
            entry.isFolder = S_ISDIR(info.st_mode);
            entry.isFile = S_ISREG(info.st_mode);
            if (entry.isFile) entry.size = static_cast<std::uint64_t>(info.st_size);
        }
        entries.push_back(std::move(entry));
    }
    ::closedir(stream);
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

std::uint64_t FileUtils::directorySize(const std::filesystem::path& folder) {
    std::uint64_t total = 0;
    std::vector<std::filesystem::path> open{folder};
    while (!open.empty()) {
        const auto current = std::move(open.back());
        open.pop_back();
        for (const Entry& entry : entriesOf(current)) {
            total += std::min(entry.size, std::numeric_limits<std::uint64_t>::max() - total);
            if (entry.isFolder) open.push_back(current / entry.name);
        }
    }
    return total;
}

std::string FileUtils::getDirectorySizeAsStringfromPath(const std::filesystem::path& folder) {
    return sizeText(directorySize(folder));
}

std::string FileUtils::sizeText(std::uint64_t bytes) {
    if (bytes == 1) return "1 byte";
    if (bytes < 1000) return fmt::format("{} bytes", bytes);
    constexpr const char* units[] = {"KB", "MB", "GB", "TB", "PB", "EB"};
    double size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    // 999.95 would be written as 1000.0.
    for (; size >= 999.95 && unit + 1 < std::size(units); ++unit) size /= 1000;
    return fmt::format("{:.1f} {}", size, units[unit]);
}

int FileUtils::makePrivateFolders(const std::filesystem::path& folder) {
    constexpr mode_t kOwnersFolder = 0700;
    std::filesystem::path made;
    int failure = 0;
    for (const auto& part : folder) {
        made /= part;
        failure = ::mkdir(made.c_str(), kOwnersFolder) == 0 ? 0 : errno;
    }
    std::error_code ignored;
    return std::filesystem::is_directory(folder, ignored) ? 0
           : failure == EEXIST                            ? ENOTDIR
                                                          : failure;
}

std::string FileUtils::lackOfSpace(const std::filesystem::path& folder, std::uint64_t bytes) {
    struct statvfs info {};
    if (::statvfs(folder.c_str(), &info) != 0) return "";
    const std::uint64_t free = std::uint64_t{info.f_bavail} * info.f_frsize;
    if (bytes <= free) return "";
    return fmt::format("needs {} ({} bytes), but there are {} ({} bytes)", sizeText(bytes), bytes,
                       sizeText(free), free);
}

std::string FileUtils::writeAtomically(const std::filesystem::path& path,
                                       std::string_view content) {
    return writeAtomically(path, [content](std::ostream& out) {
        out.write(content.data(), static_cast<std::streamsize>(content.size()));
        return true;
    });
}

std::string FileUtils::writeAtomically(const std::filesystem::path& path, const Writing& write,
                                       const std::stop_token& stop) {
    static std::atomic<unsigned int> serial{0};
    std::error_code error;
    std::filesystem::path target = std::filesystem::canonical(path, error);
    if (error) {
        target = path;
    } else if (std::filesystem::is_directory(target, error)) {
        return causeOf(EISDIR);
    } else if (!std::filesystem::is_regular_file(target, error)) {
        return writeInPlace(target, write);
    }
    auto aside = target;
    aside.replace_filename(fmt::format(".{}.{}-{}.part",
                                       safeFileName(target.filename().string(), 200), ::getpid(),
                                       serial.fetch_add(1)));
    const int fd = ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerAlone);
    if (fd < 0) return causeOf(errno);
    int failure = 0;
    try {
        failure = writeAndClose(fd, write, &stop);
    } catch (...) {
        ::unlink(aside.c_str());
        throw;
    }
    if (failure == 0 && ::rename(aside.c_str(), target.c_str()) != 0) failure = errno;
    if (failure == 0) return "";
    ::unlink(aside.c_str());
    return causeOf(failure);
}

std::string FileUtils::safeFileName(std::string_view name, std::size_t maxBytes) {
    if (name.size() > maxBytes) {
        std::size_t end = maxBytes;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end;
        name = name.substr(0, end);
    }
    std::string safe;
    for (std::size_t at = 0; at < name.size(); ++at) {
        const bool wide = isC1Control(name.substr(at));
        safe += wide || name[at] == '/' || isC0Control(name[at]) ? '_' : name[at];
        if (wide) ++at;
    }
    if (safe.empty() || safe == ".") return "_";
    return safe == ".." ? "__" : safe;
}

}  // namespace salvor
