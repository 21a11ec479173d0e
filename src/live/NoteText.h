#pragma once

#include <string>
#include <string_view>

#include "util/Text.h"

namespace salvor {

/// The plain text of a note body as the store of iOS 9 and later keeps it: a gzip stream of
/// protocol-buffer messages with the text at field path 2, 3, 2. Absent when the data is
/// something else (a password-protected note), is damaged or unpacks to more than 64 MB.
Text noteTextOfStoredData(std::string_view data);

/// The text at field path 2, 3, 2 of an unpacked note body.
Text noteTextOfDocument(std::string_view document);

/// The body of an older note without its tags, each "&nbsp;" turned into a blank.
std::string plainTextOfHtml(std::string_view html);

}  // namespace salvor
