#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "device/MobileDeviceAccess.h"

namespace salvor {

/// What the multiplexer daemon says is attached.
struct DeviceSearch {
    AMDStatus daemon = kAMDSuccess;         ///< why there is no list
    std::vector<AttachedDevice> attached;   ///< at a cable, those that cannot be reached included
    std::vector<AttachedDevice> onNetwork;  ///< and not at a cable
};

/// Waits until every attached device has been announced to `devices`, which must have a listener:
/// each has its own time to answer, a silent one holds up no other. Ends sooner when `enough`
/// holds, after `patience`, or when `ended` is stopped.
DeviceSearch searchDevices(MobileDeviceAccess& devices, const std::stop_token& ended = {},
                           const std::function<bool()>& enough = {},
                           std::chrono::milliseconds patience = std::chrono::seconds(60));

/// The listed device with this identifier, whatever its letters; null when there is none.
std::shared_ptr<AMDevice> findDevice(const MobileDeviceAccess& devices, const std::string& udid);
/// The same among those that could not be connected.
const MobileDeviceAccess::Unreachable* findUnreachable(const MobileDeviceAccess& devices,
                                                       const std::string& udid);
/// The same among what the daemon lists.
bool lists(const std::vector<AttachedDevice>& devices, const std::string& udid);

/// A connected device in a few words.
struct DeviceSummary {
    Text DeviceName;
    Text UniqueDeviceID;
    Text ProductType;
    Text ProductVersion;
    AMDStatus session = kAMDSuccess;  ///< why the device opens no session for this computer
    bool encryptsBackups = false;     ///< as it says in a session
};

/// Reads in a session; what the device tells any computer when it refuses one.
DeviceSummary describeDevice(AMDevice& device);
/// All that a search found, in the daemon's order, asked side by side. One that does not answer is
/// described by the identifier that the daemon knows.
std::vector<DeviceSummary> describeDevices(const MobileDeviceAccess& devices,
                                           const DeviceSearch& search);

}  // namespace salvor
