#include "device/UsbDeviceFramework.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <usbmuxd.h>
#include <utility>

#include "device/PairRecord.h"
#include "device/Pairing.h"

namespace salvor {
namespace {

constexpr auto kAddressVariable = "USBMUXD_SOCKET_ADDRESS";
constexpr AMDeviceNotificationRef kTheSubscription = 1;

std::string udidOf(const usbmuxd_device_info_t& device) {
    const auto* end = std::find(std::begin(device.udid), std::end(device.udid), '\0');
    return std::string(std::begin(device.udid), end);
}

/// The value that the multiplexer knows itself, in the form of a device's answer.
AMDeviceValue valueOf(const std::string& text) {
    const auto request = lockdownRequest({{"Value", text}});
    return AMDeviceValue(PropertyList::parse(Bytes(request).subspan(4)));
}

}  // namespace

UsbDeviceFramework::UsbDeviceFramework(DeviceLimits limits) : limits_(limits) {
    std::signal(SIGPIPE, SIG_IGN);
}

UsbDeviceFramework::~UsbDeviceFramework() {
    AMDeviceNotificationUnsubscribe(kTheSubscription);
}

std::string UsbDeviceFramework::daemonAddress() {
    const char* given = std::getenv(kAddressVariable);
    return given != nullptr && *given != '\0' ? given : "/var/run/usbmuxd";
}

AMDStatus UsbDeviceFramework::attachedDevices(std::vector<std::string>& udids) {
    usbmuxd_device_info_t* list = nullptr;
    const int count = usbmuxd_get_device_list(&list);
    if (count < 0) return kAMDNoDaemon;
    for (int i = 0; i < count; ++i) {
        if (list[i].conn_type == CONNECTION_TYPE_USB) udids.push_back(udidOf(list[i]));
    }
    usbmuxd_device_list_free(&list);
    return kAMDSuccess;
}

// Runs on the library's thread, which may be cancelled where it waits: nothing here does.
struct UsbDeviceFramework::Events {
    static void happened(const usbmuxd_event_t* event, void* context) {
        auto* self = static_cast<UsbDeviceFramework*>(context);
        if (event->device.conn_type != CONNECTION_TYPE_USB) return;
        const std::uint32_t handle = event->device.handle;
        if (event->event == UE_DEVICE_ADD) {
            self->runLoop().offer(
                [self, handle, udid = udidOf(event->device)] { self->arrived(handle, udid); });
        } else if (event->event == UE_DEVICE_REMOVE) {
            self->runLoop().offer([self, handle] { self->left(handle); });
        }
    }
};

AMDStatus UsbDeviceFramework::AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                                            std::uint32_t, std::uint32_t,
                                                            void* context,
                                                            AMDeviceNotificationRef* notification) {
    if (subscription_ != nullptr || callback == nullptr) return kAMDUnknownError;
    // The library watches the usual socket's folder for the daemon to come; another socket it has
    // to try again and again.
    libusbmuxd_set_use_inotify(std::getenv(kAddressVariable) == nullptr ? 1 : 0);
    callback_ = callback;
    context_ = context;
    if (usbmuxd_events_subscribe(&subscription_, &Events::happened, this) != 0) {
        subscription_ = nullptr;
        return kAMDNoDaemon;
    }
    *notification = kTheSubscription;
    return kAMDSuccess;
}

AMDStatus UsbDeviceFramework::AMDeviceNotificationUnsubscribe(AMDeviceNotificationRef) {
    if (subscription_ == nullptr) return kAMDSuccess;
    usbmuxd_events_unsubscribe(subscription_);
    subscription_ = nullptr;
    callback_ = nullptr;
    return kAMDSuccess;
}

void UsbDeviceFramework::tell(AMDeviceRef device, AMDeviceMessage message) {
    if (callback_ != nullptr) callback_({device, message}, context_);
}

void UsbDeviceFramework::arrived(std::uint32_t muxHandle, const std::string& udid) {
    left(muxHandle);  // a handle that is used anew tells of a removal that was missed
    const AMDeviceRef device = ++last_;
    devices_[device] = {udid, muxHandle, nullptr, false};
    tell(device, AMDeviceMessage::Connected);
}

void UsbDeviceFramework::left(std::uint32_t muxHandle) {
    const auto found = std::find_if(devices_.begin(), devices_.end(), [muxHandle](const auto& one) {
        return one.second.muxHandle == muxHandle;
    });
    if (found == devices_.end()) return;
    const AMDeviceRef device = found->first;
    devices_.erase(found);
    tell(device, AMDeviceMessage::Disconnected);
}

UsbDeviceFramework::Attached* UsbDeviceFramework::find(AMDeviceRef device) {
    const auto found = devices_.find(device);
    return found == devices_.end() ? nullptr : &found->second;
}

AMDStatus UsbDeviceFramework::open(Attached& device) {
    const int fd = usbmuxd_connect(device.muxHandle, LockdownClient::kPort);
    if (fd < 0) return kAMDNotConnected;
    auto lockdown =
        std::make_unique<LockdownClient>(std::make_unique<ByteLink>(fd, stop_), limits_);
    if (const AMDStatus failed = lockdown->queryType()) return failed;
    device.lockdown = std::move(lockdown);
    return kAMDSuccess;
}

AMDStatus UsbDeviceFramework::AMDeviceConnect(AMDeviceRef device) {
    Attached* attached = find(device);
    if (attached == nullptr) return kAMDNoDevice;
    const AMDStatus status = open(*attached);
    attached->wanted = status == kAMDSuccess;
    return status;
}

AMDStatus UsbDeviceFramework::AMDeviceDisconnect(AMDeviceRef device) {
    if (Attached* attached = find(device)) {
        attached->lockdown.reset();
        attached->wanted = false;
    }
    return kAMDSuccess;
}

AMDStatus UsbDeviceFramework::AMDeviceStartSession(AMDeviceRef device) {
    Attached* attached = find(device);
    if (attached == nullptr) return kAMDNoDevice;
    if (!attached->wanted) return kAMDNotConnected;
    auto record = PairRecord::ofDevice(attached->udid);
    if (!record) {
        if (const AMDStatus failed = pairWithDevice(attached->udid)) return failed;
        record = PairRecord::ofDevice(attached->udid);
        if (!record) return kAMDMissingPairRecord;
    }
    if (!attached->lockdown) {
        if (const AMDStatus failed = open(*attached)) return failed;
    }
    const AMDStatus status = attached->lockdown->startSession(*record);
    if (attached->lockdown->spent()) attached->lockdown.reset();
    return status;
}

AMDStatus UsbDeviceFramework::AMDeviceStopSession(AMDeviceRef device) {
    Attached* attached = find(device);
    if (attached == nullptr) return kAMDNoDevice;
    if (!attached->lockdown) return kAMDNotConnected;
    const AMDStatus status = attached->lockdown->stopSession();
    // The next session gets a link of its own.
    if (attached->lockdown->spent()) attached->lockdown.reset();
    return status;
}

std::optional<AMDeviceValue> UsbDeviceFramework::AMDeviceCopyValue(AMDeviceRef device,
                                                                   const char* domain,
                                                                   const char* key) {
    Attached* attached = find(device);
    if (attached == nullptr || !attached->wanted) return std::nullopt;
    if (!attached->lockdown && open(*attached) != kAMDSuccess) return std::nullopt;
    PropertyList answer;
    const AMDStatus status = attached->lockdown->getValue(domain, key, answer);
    if (status == kAMDSuccess && answer.has("Value")) return AMDeviceValue(std::move(answer));
    // Newer devices tell their identifier to computers that they trust alone.
    const bool isIdentifier =
        domain == nullptr && key != nullptr && std::string_view(key) == "UniqueDeviceID";
    return isIdentifier && !attached->udid.empty() ? std::optional(valueOf(attached->udid))
                                                   : std::nullopt;
}

}  // namespace salvor
