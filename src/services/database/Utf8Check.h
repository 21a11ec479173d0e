#pragma once

#include <string_view>

namespace salvor {

/// Whether `text` is strict UTF-8: no overlong forms, surrogates or code points past U+10FFFF.
/// Zero bytes are allowed.
bool isStrictUtf8(std::string_view text);

}  // namespace salvor
