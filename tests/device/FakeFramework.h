#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "device/MobileDeviceFramework.h"

namespace salvor {

/// A framework whose devices, statuses and events a test sets. Records the calls, each as
/// "Operation device domain key" without the framework's prefix, with a comma between; null is "-".
class FakeFramework : public MobileDeviceFramework {
  public:
    struct Device {
        std::map<std::string, std::string> values;  ///< by "domain key"
        std::map<std::string, AMDStatus> failing;   ///< by operation
    };

    std::map<AMDeviceRef, Device> devices;
    std::set<AMDeviceRef> attached;  ///< by the messages of late
    AMDStatus subscribeStatus = kAMDSuccess;
    std::string calls;

    Device& add(AMDeviceRef device, const std::string& name, const std::string& udid) {
        devices[device].values = {{"- DeviceName", name}, {"- UniqueDeviceID", udid}};
        return devices[device];
    }
    void happens(AMDeviceMessage message, AMDeviceRef device) {
        if (message == AMDeviceMessage::Connected) attached.insert(device);
        if (message == AMDeviceMessage::Disconnected) attached.erase(device);
        callback_({device, message}, context_);
    }
    void happensLater(AMDeviceMessage message, AMDeviceRef device) {
        runLoop().post([this, message, device] { happens(message, device); });
    }

    AMDStatus AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                            std::uint32_t zero, std::uint32_t otherZero,
                                            void* context,
                                            AMDeviceNotificationRef* notification) override {
        note("NotificationSubscribe " + std::to_string(zero) + ' ' + std::to_string(otherZero));
        callback_ = callback;
        context_ = context;
        *notification = 77;
        return subscribeStatus;
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
        note("CopyValue " + std::to_string(device) + ' ' + wanted);
        const auto& values = devices.at(device).values;
        const auto found = values.find(wanted);
        return found == values.end() ? std::nullopt : std::optional(AMDeviceValue(found->second));
    }
    void endWith(std::stop_token) override {}
    AMDStatus listDevices(std::vector<AttachedDevice>& list) override {
        list.clear();
        for (const auto device : attached) list.push_back(attachedAs(device));
        return kAMDSuccess;
    }
    AttachedDevice attachedAs(AMDeviceRef device) override {
        const auto& values = devices[device].values;
        const auto udid = values.find("- UniqueDeviceID");
        return {static_cast<std::uint32_t>(device), udid == values.end() ? "" : udid->second};
    }

  private:
    void note(const std::string& text) { calls += (calls.empty() ? "" : ", ") + text; }
    AMDStatus call(const std::string& operation, AMDeviceRef device) {
        note(operation + ' ' + std::to_string(device));
        const auto found = devices.find(device);
        if (found == devices.end()) return kAMDNoDevice;
        const auto failing = found->second.failing.find(operation);
        return failing == found->second.failing.end() ? kAMDSuccess : failing->second;
    }

    AMDeviceNotificationCallback callback_ = nullptr;
    void* context_ = nullptr;
};

}  // namespace salvor
