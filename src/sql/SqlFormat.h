#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

#include "util/Text.h"

namespace salvor {

/// A value that is spliced into a statement.
using SqlArgument = std::variant<Text, std::int64_t, double>;

/// `format` with its placeholders filled in order, without quoting, which the connection's guards
/// make harmless. Kept: unquoted-values. "%@" takes any value
/// ("(null)" for an absent text, the shortest text that reads back for a double), "%d" a number
/// cut to 32 bits, "%ld" and "%lld" a 64-bit one; "%%" is a percent sign. A placeholder without
/// a value and any other text stays.
std::string formatSql(std::string_view format, std::initializer_list<SqlArgument> arguments);

}  // namespace salvor
