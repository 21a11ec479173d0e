#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
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

    /// Replaces or creates a file as a whole: written aside in the same folder, then renamed. A
    /// link is followed to its file; a device or pipe is written in place. Returns "" or the cause
    /// of the failure, after which the old file is untouched.
    static std::string writeAtomically(const std::filesystem::path& path, std::string_view content);
    /// The same for what `write` writes to a stream with a small buffer; it answers false to give
    /// the file up.
    static std::string writeAtomically(const std::filesystem::path& path,
                                       const std::function<bool(std::ostream&)>& write);

    /// `name` with "/" and control characters as "_", cut to `maxBytes` at a character's end;
    /// never "", "." or "..".
    static std::string safeFileName(std::string_view name, std::size_t maxBytes = 255);
};

}  // namespace salvor
