#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace salvor {

/// Files and folders of the host. Nothing here throws for what the file system does, follows a
/// link inside a folder or touches the access time of a folder that it may read quietly.
struct FileUtils {
    struct Entry {
        std::string name;
        bool isFolder = false;
        bool isFile = false;     ///< a regular file; a link is neither
        std::uint64_t size = 0;  ///< of a regular file, in bytes
    };

    /// The entries of a folder in the order of their names, without "." and ".."; empty when it
    /// cannot be read.
    static std::vector<Entry> entriesOf(const std::filesystem::path& folder);
    /// Sum of the sizes of all regular files below a folder, in bytes; what cannot be read counts
    /// as nothing.
    static std::uint64_t directorySize(const std::filesystem::path& folder);
    /// `directorySize` for people, such as "1.2 MB".
    static std::string getDirectorySizeAsStringfromPath(const std::filesystem::path& folder);
    /// Powers of 1000: "999 bytes", "1.2 KB", "3.4 GB".
    static std::string sizeText(std::uint64_t bytes);

    /// Makes a folder, and those that lead to it, where they are missing; its owner alone may enter
    /// what is made. Returns 0 or the error (errno).
    static int makePrivateFolders(const std::filesystem::path& folder);
    /// "" when the file system of `folder`, which is there, has room for so many bytes, else how
    /// many are needed and how many there are. One that does not tell is taken to have room.
    static std::string lackOfSpace(const std::filesystem::path& folder, std::uint64_t bytes);

    /// Replaces or creates a file as a whole: written aside in the same folder, then renamed. Its
    /// owner alone may read it. A link is followed to its file; a device or pipe is written in
    /// place. Returns "" or the cause of the failure, after which the old file is untouched.
    static std::string writeAtomically(const std::filesystem::path& path, std::string_view content);
    /// The same for what `write` writes to a stream with a small buffer; it answers false to give
    /// the file up. So does `stop`, as long as the file is on its way to the disk.
    static std::string writeAtomically(const std::filesystem::path& path,
                                       const std::function<bool(std::ostream&)>& write,
                                       const std::stop_token& stop = {});

    /// `name` with "/" and control characters as "_", cut to `maxBytes` at a character's end;
    /// never "", "." or "..".
    static std::string safeFileName(std::string_view name, std::size_t maxBytes = 255);
};

}  // namespace salvor
