#pragma once

#include <chrono>
#include <stop_token>
#include <string>

#include "device/AMDStatus.h"

namespace salvor {

/// Asks a device to trust this computer; the person at the device has to confirm it, which
/// `kAMDPairingPending` tells. The multiplexer daemon keeps what results. Waits for the device no
/// longer than `limit` and ends soon after `stop` is asked for.
AMDStatus pairWithDevice(const std::string& udid, std::chrono::milliseconds limit,
                         const std::stop_token& stop);

}  // namespace salvor
