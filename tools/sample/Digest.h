#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace salvor {

/// The 40 lower-case digits of the SHA-1 of these bytes. Test-side twin of the program's own
/// digest, so that the samples do not depend on what they test.
std::string sampleDigest(std::string_view bytes);
/// The 20 raw bytes of the same digest.
std::string sampleDigestBytes(std::string_view bytes);

/// The name under which a backup stores the file at `path` of `domain`.
std::string sampleStoredName(std::string_view domain, std::string_view path);

/// All bytes of a file; throws std::runtime_error when it cannot be read.
std::string readWholeFile(const std::filesystem::path& path);
/// Writes a file anew; throws std::runtime_error when that fails.
void writeWholeFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace salvor
