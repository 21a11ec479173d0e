#include "device/DeviceWatch.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <usbmuxd.h>
#include <utility>

#include "device/MuxLibrary.h"

namespace salvor {
namespace {

/// More are not looked at, whatever a daemon says.
constexpr int kMostDevices = 256;

/// Calls `tell` with each of `devices` that is not among `others`. A number that now belongs to
/// another device counts as another device.
void tellOfOthers(const std::vector<AttachedDevice>& devices,
                  const std::vector<AttachedDevice>& others,
                  const std::function<void(const AttachedDevice&)>& tell) {
    for (const auto& device : devices) {
        if (std::find(others.begin(), others.end(), device) == others.end()) tell(device);
    }
}

}  // namespace

AMDStatus listAttachedDevices(std::vector<AttachedDevice>& devices) {
    const std::lock_guard lock(muxLibrary());
    usbmuxd_device_info_t* list = nullptr;
    const int count = usbmuxd_get_device_list(&list);
    // A daemon that refuses makes it answer with the daemon's error number and no list.
    if (count < 0 || list == nullptr) return kAMDNoDaemon;
    for (int i = 0; i < std::min(count, kMostDevices); ++i) {
        if (list[i].conn_type != CONNECTION_TYPE_USB) continue;
        const auto& udid = list[i].udid;
        devices.push_back(
            {list[i].handle, std::string(udid, std::find(udid, std::end(udid), '\0'))});
    }
    usbmuxd_device_list_free(&list);
    return kAMDSuccess;
}

DeviceWatch::DeviceWatch(Told told, std::chrono::milliseconds pause)
    : told_(std::move(told)),
      thread_([this, pause](const std::stop_token& stop) { run(stop, pause); }) {}

void DeviceWatch::run(const std::stop_token& stop, std::chrono::milliseconds pause) {
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    while (!stop.stop_requested()) {
        look();
        wake.wait_for(lock, stop, pause, [] { return false; });
    }
}

void DeviceWatch::look() {
    std::vector<AttachedDevice> now;
    listAttachedDevices(now);  // without a daemon nothing is attached
    const auto before = std::exchange(known_, now);
    tellOfOthers(before, now, told_.left);
    tellOfOthers(now, before, told_.arrived);
}

}  // namespace salvor
