#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace salvor {

/// A decoded column of a carved record.
using ColumnValue = std::variant<std::int64_t, double, std::string>;

/// A column that was read; absent when its text or blob does not decode.
using OptionalColumnValue = std::optional<ColumnValue>;

}  // namespace salvor
