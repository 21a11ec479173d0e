#pragma once

#include <cstddef>
#include <string_view>

#include "util/Bytes.h"

namespace salvor {

/// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF. Zero bytes are allowed.
bool isValidUtf8(Bytes data);
bool isValidUtf8(std::string_view text);

/// Length of a valid UTF-8 text in UTF-16 units, the unit in which rules count characters.
std::size_t utf16Length(std::string_view text);

/// Byte offset at which the UTF-16 unit `units` begins; the size of the text when it is shorter.
/// A position inside a surrogate pair gives the start of that pair, so that no cut splits it.
std::size_t utf16Offset(std::string_view text, std::size_t units);

/// At most `count` UTF-16 units of `text` from the unit `position` on.
std::string_view utf16Substring(std::string_view text, std::size_t position,
                                std::size_t count = std::string_view::npos);

/// Decodes the code point at the start of `text`, which must be valid UTF-8 and not empty, and
/// moves `text` behind it.
char32_t takeCodePoint(std::string_view& text);

}  // namespace salvor
