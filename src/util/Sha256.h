#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

namespace salvor {

/// The SHA-256 of a regular file as 64 lower-case hexadecimal digits, read piece by piece. Nothing
/// when the file cannot be mapped, the cryptographic library refuses or `stop` is asked for.
std::optional<std::string> sha256OfFile(const std::filesystem::path& path,
                                        const std::stop_token& stop = {});

}  // namespace salvor
