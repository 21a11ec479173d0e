#include "device/MobileDeviceAccess.h"

#include <algorithm>
#include <utility>

#include "device/UsbDeviceFramework.h"

namespace salvor {
namespace {

void notify(const AMDeviceNotificationInfo& info, void* context) {
    static_cast<MobileDeviceAccess*>(context)->Notify(info);
}

}  // namespace

MobileDeviceAccess& MobileDeviceAccess::singleton() {
    static MobileDeviceAccess theAccess(std::make_unique<UsbDeviceFramework>());
    return theAccess;
}

MobileDeviceAccess::MobileDeviceAccess(std::unique_ptr<MobileDeviceFramework> framework)
    : framework_(std::move(framework)) {}

bool MobileDeviceAccess::setListener(DeviceListener* listener) {
    _listener = listener;
    if (listener != nullptr && !_subscribed) {
        _subscribed = framework_->AMDeviceNotificationSubscribe(&notify, 0, 0, this,
                                                                &_notification) == kAMDSuccess;
    }
    return true;
}

bool MobileDeviceAccess::waitForConnection(const std::stop_token& ended,
                                           std::optional<std::chrono::milliseconds> limit) {
    if (!_subscribed) return false;
    _waitingInRunLoop = true;
    framework_->runLoop().run(ended, limit);
    _waitingInRunLoop = false;
    return true;
}

void MobileDeviceAccess::Notify(const AMDeviceNotificationInfo& info) {
    switch (info.message) {
        case AMDeviceMessage::Connected:
            connected(info.device);
            break;
        case AMDeviceMessage::Disconnected:
            disconnected(info.device);
            break;
        default:
            return;
    }
    if (_waitingInRunLoop) framework_->runLoop().stop();
}

void MobileDeviceAccess::connected(AMDeviceRef device) {
    Unreachable failure{device, framework_->attachedAs(device), kAMDSuccess, {}};
    const auto made = AMDevice::initWithDevice(*framework_, device, failure.error, failure.status);
    if (!made) {
        unreachable_.push_back(std::move(failure));
        return;
    }
    _devices.push_back(made);
    if (_listener != nullptr) _listener->deviceConnected(made);
}

void MobileDeviceAccess::disconnected(AMDeviceRef device) {
    std::erase_if(unreachable_, [device](const auto& one) { return one.device == device; });
    const auto found = std::find_if(_devices.begin(), _devices.end(),
                                    [device](const auto& one) { return one->isDevice(device); });
    if (found == _devices.end()) return;
    const auto gone = *found;
    gone->forgetDevice();
    if (_listener != nullptr) _listener->deviceDisconnected(gone);
    std::erase(_devices, gone);
}

}  // namespace salvor
