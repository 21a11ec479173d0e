#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "util/TerminalText.h"
#include "util/Text.h"

namespace salvor::cli {

/// Keeps keys in the order in which they are put.
using Json = nlohmann::ordered_json;

/// Null for an absent text.
inline Json jsonOf(const Text& text) {
    return text ? Json(*text) : Json(nullptr);
}

/// `value` on one line, with its line break. Bytes that are not UTF-8 become U+FFFD; NaN and
/// infinities become null. What a terminal would obey is escaped.
inline std::string jsonLine(const Json& value) {
    return escapedForTerminals(value.dump(-1, ' ', false, Json::error_handler_t::replace)) + '\n';
}

/// As `jsonLine`, indented over several lines.
inline std::string jsonText(const Json& value) {
    return escapedForTerminals(value.dump(2, ' ', false, Json::error_handler_t::replace)) + '\n';
}

}  // namespace salvor::cli
