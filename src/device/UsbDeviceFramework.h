#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "device/DeviceGreetings.h"
#include "device/DeviceWatch.h"
#include "device/MobileDeviceFramework.h"
#include "device/UsbDevice.h"

namespace salvor {

/// The framework over the multiplexer daemon and the lockdown service of the devices behind it.
/// USB devices only; each is announced once it has answered who it is, or has not in its time.
/// Making one has the process ignore SIGPIPE: a device that hangs up must not end the program.
class UsbDeviceFramework : public MobileDeviceFramework {
  public:
    explicit UsbDeviceFramework(DeviceLimits limits = {});

    /// Succeeds also while no daemon runs: devices arrive once it does.
    AMDStatus AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                            std::uint32_t zero, std::uint32_t otherZero,
                                            void* context,
                                            AMDeviceNotificationRef* notification) override;
    /// The first time it answers what the device's greeting brought.
    AMDStatus AMDeviceConnect(AMDeviceRef device) override;
    AMDStatus AMDeviceDisconnect(AMDeviceRef device) override;
    /// Asks the device to trust this computer when it does not yet, or not any more.
    AMDStatus AMDeviceStartSession(AMDeviceRef device) override;
    AMDStatus AMDeviceStopSession(AMDeviceRef device) override;
    std::optional<AMDeviceValue> AMDeviceCopyValue(AMDeviceRef device, const char* domain,
                                                   const char* key) override;
    void endWith(std::stop_token stop) override { stop_ = std::move(stop); }
    AMDStatus listDevices(std::vector<AttachedDevice>& devices) override;
    AttachedDevice attachedAs(AMDeviceRef device) override;

  private:
    struct Known {
        UsbDevice device;
        std::optional<Greeting> greeting;  ///< until the device has been disconnected
    };

    Known* find(AMDeviceRef device);
    void arrived(const AttachedDevice& attached, const Greeting& greeting);
    void left(const AttachedDevice& attached);

    DeviceLimits limits_;
    std::stop_token stop_;
    std::map<AMDeviceRef, Known> devices_;
    AMDeviceRef last_ = 0;
    AMDeviceNotificationCallback callback_ = nullptr;
    void* context_ = nullptr;
    DeviceGreetings greetings_;
    std::unique_ptr<DeviceWatch> watch_;  ///< ends before what it tells
};

}  // namespace salvor
