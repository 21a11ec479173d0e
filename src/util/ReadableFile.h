#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

#include "util/FileCopy.h"

namespace salvor {

/// A regular file of the host, opened for reading. Opening waits for nobody, not even on a pipe,
/// and leaves the access time as it is where the system allows it.
class ReadableFile {
  public:
    /// Nothing when the file cannot be opened or is no regular file.
    static std::optional<ReadableFile> open(const std::filesystem::path& path);
    /// The file at `path` inside the open folder `folder`, which a listing of that folder has
    /// called a regular file; it is not asked again, and a link in its place is not followed.
    static std::optional<ReadableFile> openIn(int folder, const char* path);

    ReadableFile(ReadableFile&& other) noexcept;
    ReadableFile& operator=(ReadableFile&& other) noexcept;
    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;
    ~ReadableFile();

    /// The first bytes of the file, as many as there are and fit; returns how many. Nothing, and
    /// `errno`, when they cannot be read.
    std::optional<std::size_t> readHead(std::span<std::uint8_t> head) const;

    /// Copies the whole file to `target`, which must not be there yet and which its owner alone may
    /// read, as cheaply as the file systems can: shared blocks, else inside the kernel, else
    /// through memory.
    FileCopy copyTo(const std::filesystem::path& target, const FileCopyOptions& options = {}) const;
    /// A copy inside `folder` shares its blocks with this file and so takes no space.
    bool sharesBlocksWith(const std::filesystem::path& folder) const;

  private:
    static std::optional<ReadableFile> opened(int folder, const char* path, int flags);
    explicit ReadableFile(int descriptor) : descriptor_(descriptor) {}

    int descriptor_ = -1;
};

}  // namespace salvor
