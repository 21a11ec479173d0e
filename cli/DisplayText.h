#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace salvor::cli {

/// `text` as it may be shown on a terminal: control characters, characters that change the writing
/// direction and bytes that are not UTF-8 become U+FFFD, so that no name of a backup can move the
/// cursor or hide what stands beside it.
std::string printable(std::string_view text);

/// Columns that `text` takes on a terminal: wide characters count two, combining ones none.
std::size_t displayWidth(std::string_view text);

/// `text` cut to at most `columns` columns, the last of them an ellipsis when something was cut.
std::string fitted(std::string_view text, std::size_t columns);

/// Unix seconds as "2012-01-01 00:00:00" in the local time zone.
std::string shownTime(std::int64_t unixSeconds);

}  // namespace salvor::cli
