#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace salvor {

/// What can be seen of one entry of a folder: kind, mode, owner, size, time stamps of content and
/// of status to the nanosecond, and the digest of the bytes (a link's target).
using TreeState = std::map<std::string, std::string>;

/// The state of every entry below `folder` by its relative path, the folder itself as ".".
/// Two equal states mean that nothing was added, removed, changed or touched in between.
/// Access times are left out: reading may move them.
TreeState hashTree(const std::filesystem::path& folder);

}  // namespace salvor
