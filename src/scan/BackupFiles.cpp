#include "scan/BackupFiles.h"

#include <cerrno>
#include <sys/stat.h>
#include <utility>

#include "util/ReadableFile.h"
#include "util/StoredName.h"

namespace salvor {
namespace {

class NoFileList : public StoredFileList {
  public:
    std::size_t size() const override { return 0; }
    std::filesystem::path place(std::size_t) const override { return {}; }
    std::uint64_t fileSize(std::size_t) const override { return 0; }
    FileHead readHead(std::size_t, std::span<std::uint8_t>) const override { return {0, kNone}; }
    FileCopy copyTo(std::size_t, const std::filesystem::path&,
                    const FileCopyOptions&) const override {
        return {FileCopy::End::Unreadable, kNone};
    }
    bool sharesBlocks(std::size_t, const std::filesystem::path&) const override { return false; }

  private:
    static constexpr auto kNone = "no such file";
};

class NoBackupFiles : public BackupFiles {
  public:
    FileFacts find(const std::string& storedName) const override {
        return {FileState::Absent, storedName};
    }
    BackupFile open(const std::string&) const override { return {}; }
    BackupFile own(const std::string&) const override { return {}; }
    std::unique_ptr<StoredFileList> list() const override { return std::make_unique<NoFileList>(); }
    std::optional<std::string> storedNameAt(const std::filesystem::path&) const override {
        return std::nullopt;
    }
    std::uint64_t totalBytes() const override { return 0; }
};

}  // namespace

FileFacts BackupFiles::find(const std::string& domain, const std::string& path) const {
    return find(nameFor(domain, path));
}

BackupFile BackupFiles::open(const std::string& domain, const std::string& path) const {
    return open(nameFor(domain, path));
}

std::string BackupFiles::nameFor(const std::string& domain, const std::string& path) const {
    return storedName(domain, path);
}

FileCopy BackupFiles::copyTo(const std::string& storedName, const std::filesystem::path& target,
                             const FileCopyOptions& options) const {
    const auto file = open(storedName);
    const auto readable = file ? ReadableFile::open(file.path) : std::nullopt;
    if (!readable) return {FileCopy::End::Unreadable, "cannot be read"};
    return readable->copyTo(target, options);
}

FileFacts BackupFiles::factsOf(std::filesystem::path path) {
    FileFacts facts;
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        facts.state = S_ISREG(info.st_mode) ? FileState::Present : FileState::NotAFile;
        facts.size = static_cast<std::uint64_t>(info.st_size);
        facts.modified = info.st_mtime;
    } else if (errno != ENOENT && errno != ENOTDIR) {
        facts.state = FileState::Unreadable;
    }
    facts.place = std::move(path);
    return facts;
}

std::shared_ptr<const BackupFiles> BackupFiles::none() {
    static const auto kNone = std::make_shared<const NoBackupFiles>();
    return kNone;
}

}  // namespace salvor
