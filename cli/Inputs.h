#pragma once

#include <filesystem>

#include "app/Sources.h"
#include "carving/signatures/SqLiteTableSignatures.h"
#include "cli/Console.h"

namespace salvor::cli {

inline constexpr const char* kBackupHelp = "a backup folder, or any property-list file inside one";

/// The path of what was named. Throws `Failure` (source unusable) when it is of no use.
std::filesystem::path require(NamedSource source);

/// Throws `Failure` (source unusable) unless `path` is a folder that can be listed.
void requireReadableFolder(const std::filesystem::path& path);

/// Throws `Failure` (source unusable) unless a regular file lies at `path` and can be read.
void requireReadableFile(const std::filesystem::path& path);

/// The signatures at `path`. Throws `Failure` when the file cannot be read or holds none; when it
/// is broken further on, warns and keeps what stands before.
SqLiteTableSignatures readSignatures(const std::filesystem::path& path, const Console& console);

}  // namespace salvor::cli
