#include "device/UsbDeviceFramework.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <usbmuxd.h>
#include <utility>

#include "device/MuxLibrary.h"
#include "device/PairRecord.h"
#include "device/Pairing.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

constexpr auto kAddressVariable = "USBMUXD_SOCKET_ADDRESS";
constexpr AMDeviceNotificationRef kTheSubscription = 1;

}  // namespace

UsbDeviceFramework::UsbDeviceFramework(DeviceLimits limits) : limits_(limits) {
    std::signal(SIGPIPE, SIG_IGN);
}

std::string UsbDeviceFramework::daemonAddress() {
    const char* given = std::getenv(kAddressVariable);
    return given != nullptr && *given != '\0' ? given : "/var/run/usbmuxd";
}

AMDStatus UsbDeviceFramework::AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                                            std::uint32_t, std::uint32_t,
                                                            void* context,
                                                            AMDeviceNotificationRef* notification) {
    if (watch_ || callback == nullptr) return kAMDUnknownError;
    callback_ = callback;
    context_ = context;
    DeviceWatch::Told told;
    told.arrived = [this](const AttachedDevice& one) {
        runLoop().offer([=, this] { arrived(one); });
    };
    told.left = [this](const AttachedDevice& one) { runLoop().offer([=, this] { left(one); }); };
    watch_ = std::make_unique<DeviceWatch>(std::move(told), limits_.betweenLooks);
    *notification = kTheSubscription;
    return kAMDSuccess;
}

void UsbDeviceFramework::arrived(const AttachedDevice& attached) {
    const AMDeviceRef device = ++last_;
    devices_[device].device = attached;
    callback_({device, AMDeviceMessage::Connected}, context_);
}

void UsbDeviceFramework::left(const AttachedDevice& attached) {
    const auto found = std::find_if(devices_.begin(), devices_.end(),
                                    [&](const auto& one) { return one.second.device == attached; });
    if (found == devices_.end()) return;
    const AMDeviceRef device = found->first;
    devices_.erase(found);
    callback_({device, AMDeviceMessage::Disconnected}, context_);
}

UsbDeviceFramework::Attached* UsbDeviceFramework::find(AMDeviceRef device) {
    const auto found = devices_.find(device);
    return found == devices_.end() ? nullptr : &found->second;
}

AMDStatus UsbDeviceFramework::open(Attached& device) {
    std::unique_lock lock(muxLibrary());
    const int fd = usbmuxd_connect(device.device.handle, LockdownClient::kPort);
    lock.unlock();
    if (fd < 0) return kAMDNotConnected;
    auto lockdown =
        std::make_unique<LockdownClient>(std::make_unique<ByteLink>(fd, stop_), limits_);
    if (const AMDStatus failed = lockdown->queryType()) return failed;
    device.lockdown = std::move(lockdown);
    return kAMDSuccess;
}

void UsbDeviceFramework::dropSpent(Attached& device, AMDStatus status) {
    if (!device.lockdown->spent()) return;
    device.lockdown.reset();  // what follows gets a link of its own
    device.ended = status == kAMDSuccess ? kAMDNotConnected : status;
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
    auto record = PairRecord::ofDevice(attached->device.udid);
    if (!record) {
        const AMDStatus failed = pairWithDevice(attached->device.udid, limits_.pairingTime, stop_);
        if (failed != kAMDSuccess) return failed;
        record = PairRecord::ofDevice(attached->device.udid);
        if (!record) return kAMDMissingPairRecord;
    }
    if (!attached->lockdown) {
        if (const AMDStatus failed = open(*attached)) return failed;
    }
    const AMDStatus status = attached->lockdown->startSession(*record);
    dropSpent(*attached, status);
    return status;
}

AMDStatus UsbDeviceFramework::AMDeviceStopSession(AMDeviceRef device) {
    Attached* attached = find(device);
    if (attached == nullptr) return kAMDNoDevice;
    if (!attached->lockdown) return attached->ended;
    const AMDStatus status = attached->lockdown->stopSession();
    dropSpent(*attached, status);
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
    dropSpent(*attached, status);
    if (status == kAMDSuccess && answer.has("Value")) return AMDeviceValue(answer);
    // Newer devices tell their identifier to computers that they trust alone.
    const std::string& udid = attached->device.udid;
    const bool isIdentifier =
        domain == nullptr && key != nullptr && std::string_view(key) == "UniqueDeviceID";
    if (!isIdentifier || udid.empty() || !isValidUtf8(udid)) return std::nullopt;
    return AMDeviceValue(udid);
}

}  // namespace salvor
