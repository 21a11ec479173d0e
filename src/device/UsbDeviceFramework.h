#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <stop_token>
#include <string>

#include "device/DeviceWatch.h"
#include "device/LockdownClient.h"
#include "device/MobileDeviceFramework.h"

namespace salvor {

/// The framework over the multiplexer daemon and the lockdown service of the devices behind it.
/// USB devices only. Making one has the process ignore SIGPIPE: a device that hangs up must not
/// end the program.
class UsbDeviceFramework : public MobileDeviceFramework {
  public:
    explicit UsbDeviceFramework(DeviceLimits limits = {});

    /// Succeeds also while no daemon runs: devices arrive once it does.
    AMDStatus AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                            std::uint32_t zero, std::uint32_t otherZero,
                                            void* context,
                                            AMDeviceNotificationRef* notification) override;
    AMDStatus AMDeviceConnect(AMDeviceRef device) override;
    AMDStatus AMDeviceDisconnect(AMDeviceRef device) override;
    /// Asks the device to trust this computer when it does not yet.
    AMDStatus AMDeviceStartSession(AMDeviceRef device) override;
    AMDStatus AMDeviceStopSession(AMDeviceRef device) override;
    std::optional<AMDeviceValue> AMDeviceCopyValue(AMDeviceRef device, const char* domain,
                                                   const char* key) override;
    void endWith(std::stop_token stop) override { stop_ = std::move(stop); }

    /// Where the daemon is looked for.
    static std::string daemonAddress();

  private:
    struct Attached {
        AttachedDevice device;
        std::unique_ptr<LockdownClient> lockdown;
        bool wanted = false;                 ///< connected, as far as the caller knows
        AMDStatus ended = kAMDNotConnected;  ///< why there is no link
    };

    Attached* find(AMDeviceRef device);
    AMDStatus open(Attached& device);
    /// Drops a link that is spent; `status` is what its last operation answered.
    static void dropSpent(Attached& device, AMDStatus status);
    void arrived(const AttachedDevice& device);
    void left(const AttachedDevice& device);

    DeviceLimits limits_;
    std::stop_token stop_;
    std::map<AMDeviceRef, Attached> devices_;
    AMDeviceRef last_ = 0;
    AMDeviceNotificationCallback callback_ = nullptr;
    void* context_ = nullptr;
    std::unique_ptr<DeviceWatch> watch_;  ///< ends before what it tells of
};

}  // namespace salvor
