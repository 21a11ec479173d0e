#pragma once

#include <mutex>

namespace salvor {

/// Held around every call into the multiplexer library, which keeps this program's name in a static
/// that it sets on first use without a lock.
std::mutex& muxLibrary();

}  // namespace salvor
