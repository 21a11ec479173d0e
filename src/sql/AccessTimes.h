#pragma once

namespace salvor {

/// Makes SQLite's read-only opens of this process leave the access times of files alone, where the
/// system allows it (Linux: to the owner of the file). Call before a file is opened; further
/// calls do nothing.
void keepAccessTimes();

}  // namespace salvor
