#pragma once

#include <string>

#include "app/DeviceSearch.h"

namespace salvor::cli {

/// What to tell when no daemon answers.
std::string noDaemonText();
/// What keeps a device from being read, in words, and what to do about it; `name` is how it is
/// called in the text.
std::string troubleText(const std::string& name, AMDStatus status);
/// "Anna's iPhone (0123...)", as far as it is known.
std::string nameOf(const DeviceSummary& device);

/// Throws `Failure` (no device) when no daemon answers.
void requireDaemon(const DeviceSearch& search);

}  // namespace salvor::cli
