#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "device/MobileDeviceFramework.h"
#include "tools/sample/PropertyList.h"

namespace salvor {

/// A framework whose devices, statuses and events a test sets. Records the calls, each as
/// "Operation device domain key" without the framework's prefix; null is "-".
class FakeFramework : public MobileDeviceFramework {
  public:
    struct Device {
        std::map<std::string, std::string> values;  ///< by "domain key"
        std::map<std::string, AMDStatus> failing;   ///< by operation
    };

    std::map<AMDeviceRef, Device> devices;
    AMDStatus subscribeStatus = kAMDSuccess;
    std::vector<std::string> calls;

    Device& add(AMDeviceRef device, const std::string& name, const std::string& udid) {
        devices[device].values = {{"- DeviceName", name}, {"- UniqueDeviceID", udid}};
        return devices[device];
    }
    void happens(AMDeviceMessage message, AMDeviceRef device) {
        callback_({device, message}, context_);
    }
    void happensLater(AMDeviceMessage message, AMDeviceRef device) {
        runLoop().post([this, message, device] { happens(message, device); });
    }
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    AMDStatus AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                            std::uint32_t zero, std::uint32_t otherZero,
                                            void* context,
                                            AMDeviceNotificationRef* notification) override {
        calls.push_back("NotificationSubscribe " + std::to_string(zero) + ' ' +
                        std::to_string(otherZero));
        callback_ = callback;
        context_ = context;
        if (subscribeStatus == kAMDSuccess) *notification = kNotification;
        return subscribeStatus;
    }
    AMDStatus AMDeviceNotificationUnsubscribe(AMDeviceNotificationRef notification) override {
        calls.push_back("NotificationUnsubscribe " + std::to_string(notification));
        return kAMDSuccess;
    }
    AMDStatus AMDeviceConnect(AMDeviceRef device) override { return call("Connect", device); }
    AMDStatus AMDeviceDisconnect(AMDeviceRef device) override { return call("Disconnect", device); }
    AMDStatus AMDeviceStartSession(AMDeviceRef device) override {
        return call("StartSession", device);
    }
    AMDStatus AMDeviceStopSession(AMDeviceRef device) override {
        return call("StopSession", device);
    }
    std::optional<AMDeviceValue> AMDeviceCopyValue(AMDeviceRef device, const char* domain,
                                                   const char* key) override {
        const auto name = [](const char* text) { return std::string(text ? text : "-"); };
        const std::string wanted = name(domain) + ' ' + name(key);
        calls.push_back("CopyValue " + std::to_string(device) + ' ' + wanted);
        const auto& values = devices.at(device).values;
        const auto found = values.find(wanted);
        if (found == values.end()) return std::nullopt;
        PropertyListDictionary answer;
        const std::string xml = answer.text("Value", found->second).xml();
        const Bytes bytes{reinterpret_cast<const std::uint8_t*>(xml.data()), xml.size()};
        return AMDeviceValue(PropertyList::parse(bytes));
    }
    void endWith(std::stop_token) override {}

    static constexpr AMDeviceNotificationRef kNotification = 77;

  private:
    AMDStatus call(const std::string& operation, AMDeviceRef device) {
        calls.push_back(operation + ' ' + std::to_string(device));
        const auto found = devices.find(device);
        if (found == devices.end()) return kAMDNoDevice;
        const auto failing = found->second.failing.find(operation);
        return failing == found->second.failing.end() ? kAMDSuccess : failing->second;
    }

    AMDeviceNotificationCallback callback_ = nullptr;
    void* context_ = nullptr;
};

}  // namespace salvor
