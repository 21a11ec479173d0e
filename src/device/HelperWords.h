#pragma once

#include <string_view>

namespace salvor {

/// How much a helper's line tells of why it failed, 0 for nothing. The line that tells most is not
/// its last one: that repeats a number, or counts files.
int tellsFailure(std::string_view line);

/// Whether a line tells that the device is locked.
bool tellsLock(std::string_view line);

/// The number before the last "%" of the line, 0 to 100; -1 when there is none.
int percentIn(std::string_view line);

}  // namespace salvor
