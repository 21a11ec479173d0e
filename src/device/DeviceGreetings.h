#pragma once

#include <functional>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "device/MobileDeviceFramework.h"
#include "device/MuxClient.h"

namespace salvor {

/// What a device said when it arrived.
struct Greeting {
    AMDStatus status = kAMDSuccess;  ///< why it could not be connected
    std::optional<AMDeviceValue> name;
    std::optional<AMDeviceValue> identifier;
};

/// Asks each device that arrives who it is, on a thread of its own: one that is silent or slow
/// holds up no other. Used by one thread.
class DeviceGreetings {
  public:
    using Told = std::function<void(const AttachedDevice&, const Greeting&)>;

    DeviceGreetings() = default;
    DeviceGreetings(const DeviceGreetings&) = delete;
    DeviceGreetings& operator=(const DeviceGreetings&) = delete;
    ~DeviceGreetings();

    /// `told` comes on the device's thread.
    void begin(const AttachedDevice& device, const DeviceLimits& limits, Told told);
    /// Nothing is told of the device any more.
    void end(const AttachedDevice& device);

  private:
    std::vector<std::pair<AttachedDevice, std::jthread>> asking_;
};

}  // namespace salvor
