#pragma once

#include <chrono>
#include <cstddef>

namespace salvor {

/// How long and how much the daemon and a device may answer, and how often the daemon is asked for
/// the devices.
struct DeviceLimits {
    std::chrono::milliseconds answerTime{10'000};  ///< for a request to a device and its answer
    std::size_t answerBytes = std::size_t{4} << 20;
    std::chrono::milliseconds betweenLooks{500};
    std::chrono::milliseconds pairingTime{60'000};  ///< for all that belongs to it
    std::chrono::milliseconds daemonTime{5'000};    ///< for a request to the daemon and its answer
};

}  // namespace salvor
