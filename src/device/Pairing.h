#pragma once

#include <string>

#include "device/AMDStatus.h"

namespace salvor {

/// Asks a device to trust this computer; the person at the device has to confirm it, which
/// `kAMDPairingPending` tells. The multiplexer daemon keeps what results.
AMDStatus pairWithDevice(const std::string& udid);

}  // namespace salvor
