#include "device/UsbDeviceFramework.h"

#include <algorithm>
#include <csignal>
#include <string_view>
#include <utility>

namespace salvor {
namespace {

constexpr AMDeviceNotificationRef kTheSubscription = 1;

}  // namespace

UsbDeviceFramework::UsbDeviceFramework(DeviceLimits limits) : limits_(limits) {
    std::signal(SIGPIPE, SIG_IGN);
}

AMDStatus UsbDeviceFramework::AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                                            std::uint32_t, std::uint32_t,
                                                            void* context,
                                                            AMDeviceNotificationRef* notification) {
    if (watch_ || callback == nullptr) return kAMDUnknownError;
    callback_ = callback;
    context_ = context;
    const auto greeted = [this](const AttachedDevice& one, const Greeting& greeting) {
        runLoop().offer([=, this] { arrived(one, greeting); });
    };
    DeviceWatch::Told told;
    told.arrived = [=, this](const AttachedDevice& one) {
        greetings_.begin(one, limits_, greeted);
    };
    told.left = [this](const AttachedDevice& one) {
        greetings_.end(one);
        runLoop().offer([=, this] { left(one); });
    };
    watch_ = std::make_unique<DeviceWatch>(std::move(told), limits_);
    *notification = kTheSubscription;
    return kAMDSuccess;
}

void UsbDeviceFramework::arrived(const AttachedDevice& attached, const Greeting& greeting) {
    const AMDeviceRef device = ++last_;
    devices_.emplace(device, Known{UsbDevice(attached, limits_), greeting});
    callback_({device, AMDeviceMessage::Connected}, context_);
}

void UsbDeviceFramework::left(const AttachedDevice& attached) {
    const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const auto& one) {
        return one.second.device.attached() == attached;
    });
    if (found == devices_.end()) return;
    const AMDeviceRef device = found->first;
    devices_.erase(found);
    callback_({device, AMDeviceMessage::Disconnected}, context_);
}

UsbDeviceFramework::Known* UsbDeviceFramework::find(AMDeviceRef device) {
    const auto found = devices_.find(device);
    return found == devices_.end() ? nullptr : &found->second;
}

AMDStatus UsbDeviceFramework::AMDeviceConnect(AMDeviceRef device) {
    Known* known = find(device);
    if (known == nullptr) return kAMDNoDevice;
    return known->greeting ? known->greeting->status : known->device.connect(stop_);
}

AMDStatus UsbDeviceFramework::AMDeviceDisconnect(AMDeviceRef device) {
    if (Known* known = find(device)) {
        known->device.disconnect();
        known->greeting.reset();
    }
    return kAMDSuccess;
}

AMDStatus UsbDeviceFramework::AMDeviceStartSession(AMDeviceRef device) {
    Known* known = find(device);
    return known == nullptr ? kAMDNoDevice : known->device.startSession(stop_);
}

AMDStatus UsbDeviceFramework::AMDeviceStopSession(AMDeviceRef device) {
    Known* known = find(device);
    return known == nullptr ? kAMDNoDevice : known->device.stopSession();
}

std::optional<AMDeviceValue> UsbDeviceFramework::AMDeviceCopyValue(AMDeviceRef device,
                                                                   const char* domain,
                                                                   const char* key) {
    Known* known = find(device);
    if (known == nullptr) return std::nullopt;
    if (!known->greeting) return known->device.copyValue(domain, key, stop_);
    if (domain != nullptr || key == nullptr) return std::nullopt;
    if (key == std::string_view("DeviceName")) return known->greeting->name;
    if (key == std::string_view("UniqueDeviceID")) return known->greeting->identifier;
    return std::nullopt;
}

AMDStatus UsbDeviceFramework::listDevices(std::vector<AttachedDevice>& devices) {
    return MuxClient(limits_, stop_).listDevices(devices);
}

AttachedDevice UsbDeviceFramework::attachedAs(AMDeviceRef device) {
    const Known* known = find(device);
    return known == nullptr ? AttachedDevice() : known->device.attached();
}

}  // namespace salvor
