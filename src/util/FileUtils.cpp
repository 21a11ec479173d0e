#include "util/FileUtils.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <limits>
#include <sys/stat.h>
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

// Has everything written and closes, also when `write` throws; 0 or the error.
int writeAndClose(int fd, const Writing& write, bool sync) {
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
    if (error == 0 && sync && ::fsync(fd) != 0) error = errno;
    if (::close(fd) != 0 && error == 0) error = errno;
    return error;
}

std::string writeInPlace(const std::filesystem::path& path, const Writing& write) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return causeOf(errno);
    const int error = writeAndClose(fd, write, false);
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

std::string FileUtils::writeAtomically(const std::filesystem::path& path,
                                       std::string_view content) {
    return writeAtomically(path, [content](std::ostream& out) {
        out.write(content.data(), static_cast<std::streamsize>(content.size()));
        return true;
    });
}

std::string FileUtils::writeAtomically(const std::filesystem::path& path, const Writing& write) {
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
    const int fd = ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return causeOf(errno);
    int failure = 0;
    try {
        failure = writeAndClose(fd, write, true);
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
