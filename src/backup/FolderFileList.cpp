#include "backup/FolderFileList.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "util/ReadableFile.h"

namespace salvor {
namespace {

std::string lastError() {
    return std::generic_category().message(errno);
}

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

int openFolder(int parent, const char* path, int flags) {
    // O_NOATIME is refused for folders of other owners; the plain open is then the fall-back.
    const int folder = ::openat(parent, path, flags | O_NOATIME);
    return folder >= 0 ? folder : ::openat(parent, path, flags);
}

struct CloseFolder {
    void operator()(DIR* stream) const { ::closedir(stream); }
};

unsigned char typeOf(DIR* stream, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type;
    // Some file systems do not tell the type along with the name.
    struct stat info {};
    if (::fstatat(::dirfd(stream), entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return DT_UNKNOWN;
    return static_cast<unsigned char>(IFTODT(info.st_mode));
}

bool isTwoDigits(std::string_view name) {
    return name.size() == 2 && name.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace

FolderFileList::FolderFileList(std::filesystem::path backup)
    : backup_(std::move(backup)), folder_(openFolder(AT_FDCWD, backup_.c_str(), kFolderFlags)) {
    if (folder_ < 0) return;
    std::vector<std::string> subFolders;
    list("", &subFolders);
    for (const auto& subFolder : subFolders) list(subFolder, nullptr);
    std::sort(starts_.begin(), starts_.end(), [this](std::size_t a, std::size_t b) {
        return std::strcmp(names_.data() + a, names_.data() + b) < 0;
    });
}

FolderFileList::~FolderFileList() {
    if (folder_ >= 0) ::close(folder_);
}

std::uint64_t FolderFileList::fileSize(std::size_t index) const {
    struct stat info {};
    if (::fstatat(folder_, name(index), &info, AT_SYMLINK_NOFOLLOW) != 0) return 0;
    return static_cast<std::uint64_t>(info.st_size);
}

FileHead FolderFileList::readHead(std::size_t index, std::span<std::uint8_t> head) const {
    const auto file = ReadableFile::openIn(folder_, name(index));
    const auto size = file ? file->readHead(head) : std::nullopt;
    return size ? FileHead{*size, ""} : FileHead{0, lastError()};
}

FileCopy FolderFileList::copyTo(std::size_t index, const std::filesystem::path& target,
                                const FileCopyOptions& options) const {
    const auto file = ReadableFile::openIn(folder_, name(index));
    return file ? file->copyTo(target, options) : FileCopy{FileCopy::End::Unreadable, lastError()};
}

bool FolderFileList::sharesBlocks(std::size_t index, const std::filesystem::path& folder) const {
    const auto file = ReadableFile::openIn(folder_, name(index));
    return file && file->sharesBlocksWith(folder);
}

void FolderFileList::list(const std::string& subFolder, std::vector<std::string>* subFolders) {
    const char* path = subFolder.empty() ? "." : subFolder.c_str();
    const int folder = openFolder(folder_, path, kFolderFlags | O_NOFOLLOW);
    if (folder < 0) return;
    const std::unique_ptr<DIR, CloseFolder> stream(::fdopendir(folder));
    if (stream == nullptr) {
        ::close(folder);
        return;
    }
    while (const dirent* entry = ::readdir(stream.get())) {
        const unsigned char type = typeOf(stream.get(), *entry);
        if (type == DT_REG) {
            add(subFolder, entry->d_name);
        } else if (type == DT_DIR && subFolders != nullptr && isTwoDigits(entry->d_name)) {
            subFolders->emplace_back(entry->d_name);
        }
    }
}

void FolderFileList::add(const std::string& subFolder, const char* name) {
    starts_.push_back(names_.size());
    if (!subFolder.empty()) names_.append(subFolder).append("/");
    names_.append(name, std::strlen(name) + 1);
}

}  // namespace salvor
