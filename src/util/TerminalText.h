#pragma once

#include <string>

namespace salvor {

/// Whether a terminal does something else with a character than show it: the control characters
/// up to U+001F and from U+007F to U+009F, line and paragraph separators, marks that change the
/// direction of writing.
bool isObeyedByTerminals(char32_t character);

/// A JSON text, which is valid UTF-8, with such characters from U+007F on as "\u202e" and the
/// like: they stand in its strings alone.
std::string escapedForTerminals(std::string json);

}  // namespace salvor
