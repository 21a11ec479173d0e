#pragma once

#include <chrono>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "device/DeviceWatch.h"
#include "device/MobileDeviceAccess.h"

namespace salvor {

/// What the multiplexer daemon says is attached.
struct DeviceSearch {
    AMDStatus daemon = kAMDSuccess;        ///< `kAMDNoDaemon` when nobody answers
    std::vector<AttachedDevice> attached;  ///< those that cannot be reached included
};

/// Waits until every attached device has been announced to `devices`, which must have a listener,
/// or for `patience`, or until `ended` is stopped.
DeviceSearch searchDevices(MobileDeviceAccess& devices, const std::stop_token& ended = {},
                           std::chrono::milliseconds patience = std::chrono::seconds(5));

/// The listed device with this identifier, whatever its letters; null when there is none.
std::shared_ptr<AMDevice> findDevice(const MobileDeviceAccess& devices, const std::string& udid);

/// A connected device in a few words.
struct DeviceSummary {
    Text DeviceName;
    Text UniqueDeviceID;
    Text ProductType;
    Text ProductVersion;
    AMDStatus session = kAMDSuccess;  ///< why the device opens no session for this computer
};

/// Reads in a session; what the device tells any computer when it refuses one.
DeviceSummary describeDevice(AMDevice& device);

}  // namespace salvor
