#pragma once

#include <filesystem>
#include <optional>

namespace salvor {

/// The signatures file to load: the given one, else the one beside the program, else the
/// installed one in "../share/salvor". A given path is taken as it stands; nothing when none of
/// the others exists.
std::optional<std::filesystem::path> findSignatureFile(
    const std::optional<std::filesystem::path>& given);

}  // namespace salvor
