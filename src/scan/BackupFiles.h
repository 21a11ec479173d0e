#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "util/FileCopy.h"

namespace salvor {

class BackupIndex;

/// Whether a file can be had, else why not.
enum class FileState : std::uint8_t {
    Present,
    Absent,
    NotAFile,    ///< a folder, a pipe or a device lies in its place
    Unreadable,  ///< it is there but cannot be reached
    Locked,      ///< it is encrypted, and its key is not to be had
};

/// What a backup knows of a file without reading it.
struct FileFacts {
    FileState state = FileState::Absent;
    /// Where the backup keeps the file, or would keep it: to be shown, and given back to
    /// `storedNameAt`, but opened by nobody.
    std::filesystem::path place;
    std::uint64_t size = 0;     ///< bytes
    std::int64_t modified = 0;  ///< Unix seconds

    explicit operator bool() const { return state == FileState::Present; }
};

/// A file to open by its path for as long as this object, or a copy of it, lives. The path need
/// not lie inside the backup's folder, but its last part is the stored name. When the file is not
/// present the path is its place, at which nothing opens.
struct BackupFile {
    FileState state = FileState::Absent;
    std::filesystem::path path;
    std::shared_ptr<const void> hold;  ///< keeps a private copy; null for a file that stays

    explicit operator bool() const { return state == FileState::Present; }
};

/// What could be read of the beginning of a file.
struct FileHead {
    std::size_t size = 0;  ///< bytes
    std::string fault;     ///< why the file cannot be read, or ""
};

/// Every stored file of a backup, those of its own included, by name. One thread at a time.
class StoredFileList {
  public:
    virtual ~StoredFileList() = default;

    virtual std::size_t size() const = 0;
    virtual std::filesystem::path place(std::size_t index) const = 0;
    virtual std::uint64_t fileSize(std::size_t index) const = 0;  ///< bytes; 0 if it cannot be told
    /// The first bytes of a file, as many as there are and fit.
    virtual FileHead readHead(std::size_t index, std::span<std::uint8_t> head) const = 0;
    /// Copies a file to `target`, which must not be there yet.
    virtual FileCopy copyTo(std::size_t index, const std::filesystem::path& target,
                            const FileCopyOptions& options) const = 0;
    /// A copy of a file inside `folder` takes no space.
    virtual bool sharesBlocks(std::size_t index, const std::filesystem::path& folder) const = 0;
};

/// The one way to the files of a backup, however it keeps them: flat, in sub-folders, encrypted. A
/// file is asked for by its stored name or by domain and path; nothing here throws for what the
/// file system does. Any number of threads may ask.
class BackupFiles {
  public:
    BackupFiles() = default;
    BackupFiles(const BackupFiles&) = delete;
    BackupFiles& operator=(const BackupFiles&) = delete;
    virtual ~BackupFiles() = default;

    virtual FileFacts find(const std::string& storedName) const = 0;
    virtual BackupFile open(const std::string& storedName) const = 0;
    FileFacts find(const std::string& domain, const std::string& path) const;
    BackupFile open(const std::string& domain, const std::string& path) const;

    /// A file that the backup keeps of itself, such as "Info.plist", under its own name whatever
    /// the letters' case.
    virtual BackupFile own(const std::string& name) const = 0;
    /// Never null.
    virtual std::unique_ptr<StoredFileList> list() const = 0;
    /// The stored name of the file that `find` places there; nothing for any other path.
    virtual std::optional<std::string> storedNameAt(const std::filesystem::path& place) const = 0;
    /// When a file was last changed on the device as the backup's index tells, in Unix seconds;
    /// nothing without index or record.
    virtual std::optional<std::int64_t> indexedDate(const std::string& storedName) const {
        (void)storedName;
        return std::nullopt;
    }
    /// What the whole backup takes.
    virtual std::uint64_t totalBytes() const = 0;
    /// The stored name of the file at `path` of `domain`: as the index tells it, else by the rule.
    virtual std::string nameFor(const std::string& domain, const std::string& path) const;
    /// Copies a file to `target`, which must not be there yet and which its owner alone may read.
    virtual FileCopy copyTo(const std::string& storedName, const std::filesystem::path& target,
                            const FileCopyOptions& options) const;
    /// The index by which files are found; null where their names alone lead to them.
    virtual const BackupIndex* index() const { return nullptr; }

    /// What the host tells of the file at `path`, which is its place.
    static FileFacts factsOf(std::filesystem::path path);
    /// A backup without files, for where no source is chosen.
    static std::shared_ptr<const BackupFiles> none();
};

}  // namespace salvor
