#pragma once

#include <filesystem>

namespace salvor {

/// Where `path` would lie if it were made now: symbolic links are followed, dangling ones too, and
/// what does not exist yet is appended as it stands. Relative paths start at the current folder.
std::filesystem::path resolvedPath(const std::filesystem::path& path);

/// Is `path` the folder `folder` or something below it, by whatever links and mounts it is reached?
/// Neither has to exist.
bool liesInside(const std::filesystem::path& path, const std::filesystem::path& folder);

}  // namespace salvor
