#pragma once

#include <string>

#include "backup/MDFileInfo.h"

namespace salvor {

/// The tail of `fileName` in which a file's extension is looked for: from character k on, without
/// blanks, where k is the length in UTF-16 units of the last path component without its extension.
/// A leading dot starts no extension. Kept: path-tail-as-extension.
std::string extensionText(const std::string& fileName);

/// Classifies a file by its Unix mode and name.
RecordType classifyFile(std::uint32_t mode, const std::string& fileName);

}  // namespace salvor
