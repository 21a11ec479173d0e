#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "device/AMDevice.h"
#include "device/DeviceListener.h"
#include "device/MobileDeviceFramework.h"

namespace salvor {

/// Watches the devices at the computer's USB ports: subscribes to arrivals and removals and keeps
/// the list of what is attached. A device that cannot be connected when it arrives is not listed
/// and the listener is not told of it. Used on one thread, the one that waits for connections.
class MobileDeviceAccess {
  public:
    /// A device that arrived and could not be connected.
    struct Unreachable {
        AMDeviceRef device = 0;
        AttachedDevice attached;
        AMDStatus status = kAMDSuccess;
        std::string error;
    };

    /// The one of this process, over the shipped framework; made on first use. For a window: no
    /// scan or backup calls it.
    static MobileDeviceAccess& singleton();

    explicit MobileDeviceAccess(std::unique_ptr<MobileDeviceFramework> framework);
    MobileDeviceAccess(const MobileDeviceAccess&) = delete;
    MobileDeviceAccess& operator=(const MobileDeviceAccess&) = delete;
    ~MobileDeviceAccess() = default;

    /// Sets who is told (not owned, may be null) and subscribes unless that was done. Always true.
    /// Kept: listener-always-set.
    bool setListener(DeviceListener* listener);
    bool subscribed() const { return _subscribed; }

    /// The attached devices in the order of their arrival.
    const std::vector<std::shared_ptr<AMDevice>>& devices() const { return _devices; }
    const std::vector<Unreachable>& unreachable() const { return unreachable_; }

    /// Delivers notifications until one has come, or to the end of `limit` or when `ended` is
    /// stopped. False at once without a subscription, otherwise true.
    bool waitForConnection(const std::stop_token& ended = {},
                           std::optional<std::chrono::milliseconds> limit = std::nullopt);

    /// The framework's callback: a device has come or gone.
    void Notify(const AMDeviceNotificationInfo& info);

    MobileDeviceFramework& framework() { return *framework_; }

  private:
    void connected(AMDeviceRef device);
    void disconnected(AMDeviceRef device);

    std::unique_ptr<MobileDeviceFramework> framework_;
    std::vector<std::shared_ptr<AMDevice>> _devices;
    std::vector<Unreachable> unreachable_;
    DeviceListener* _listener = nullptr;
    bool _subscribed = false;
    AMDeviceNotificationRef _notification = 0;
    bool _waitingInRunLoop = false;
};

}  // namespace salvor
