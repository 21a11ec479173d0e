#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "util/Text.h"

namespace salvor {

/// The plain text of a note body as the store of iOS 9 and later keeps it: a gzip stream of
/// protocol-buffer messages with the text at field path 2, 3, 2. Absent when the data is
/// something else (a password-protected note), is damaged or unpacks to more than `most` bytes.
/// `unpacked` grows by how many bytes it was.
inline constexpr std::uint64_t kLargestNote = std::uint64_t{64} << 20;
Text noteTextOfStoredData(std::string_view data, std::uint64_t most = kLargestNote,
                          std::uint64_t* unpacked = nullptr);

/// The text at field path 2, 3, 2 of an unpacked note body.
Text noteTextOfDocument(std::string_view document);

/// The body of an older note without its tags, each "&nbsp;" turned into a blank.
std::string plainTextOfHtml(std::string_view html);

}  // namespace salvor
