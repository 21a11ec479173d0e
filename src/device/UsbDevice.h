#pragma once

#include <memory>
#include <optional>
#include <stop_token>

#include "device/LockdownClient.h"
#include "device/MobileDeviceFramework.h"
#include "device/MuxClient.h"

namespace salvor {

/// One device behind the multiplexer daemon: the link to its lockdown service, made anew where one
/// is spent. Used by one thread at a time. What waits ends soon after its token is stopped.
class UsbDevice {
  public:
    UsbDevice(AttachedDevice attached, const DeviceLimits& limits)
        : attached_(std::move(attached)), limits_(limits) {}

    const AttachedDevice& attached() const { return attached_; }

    AMDStatus connect(const std::stop_token& stop);
    void disconnect();
    /// Asks the device to trust this computer when it does not yet, or not any more.
    AMDStatus startSession(const std::stop_token& stop);
    AMDStatus stopSession();
    /// A value of the default domain when `domain` is null; all values when `key` is null.
    std::optional<AMDeviceValue> copyValue(const char* domain, const char* key,
                                           const std::stop_token& stop);

  private:
    AMDStatus open(const std::stop_token& stop);
    AMDStatus startSessionAs(const PairRecord& record, const std::stop_token& stop);
    /// Drops a link that is spent; `status` is what its last operation answered.
    void dropSpent(AMDStatus status);

    AttachedDevice attached_;
    DeviceLimits limits_;
    std::unique_ptr<LockdownClient> lockdown_;
    bool wanted_ = false;                 ///< connected, as far as the caller knows
    AMDStatus ended_ = kAMDNotConnected;  ///< why there is no link
};

}  // namespace salvor
