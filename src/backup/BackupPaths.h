#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "util/PathRules.h"

namespace salvor {

/// The entry of `folder` called `name` whatever its letters' case, as a volume that ignores case
/// would find it: the exact spelling first, then the first other one. Nothing when there is none.
std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& folder,
                                                      const std::string& name);

/// Whether `folder` is a folder that can be listed.
bool isReadableFolder(const std::filesystem::path& folder);

}  // namespace salvor
