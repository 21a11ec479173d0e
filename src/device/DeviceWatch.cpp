#include "device/DeviceWatch.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace salvor {
namespace {

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

DeviceWatch::DeviceWatch(Told told, const DeviceLimits& limits)
    : told_(std::move(told)),
      thread_([this, limits](const std::stop_token& stop) { run(stop, limits); }) {}

void DeviceWatch::run(const std::stop_token& stop, const DeviceLimits& limits) {
    const MuxClient daemon(limits, stop);
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    while (!stop.stop_requested()) {
        look(daemon);
        wake.wait_for(lock, stop, limits.betweenLooks, [] { return false; });
    }
}

void DeviceWatch::look(const MuxClient& daemon) {
    std::vector<AttachedDevice> now;
    const AMDStatus status = daemon.listDevices(now);
    // Without a daemon nothing is attached; what one does not tell is left as it was.
    if (status != kAMDSuccess && status != kAMDNoDaemon) return;
    std::erase_if(now, [](const auto& one) { return one.overNetwork; });
    const auto before = std::exchange(known_, now);
    tellOfOthers(before, now, told_.left);
    tellOfOthers(now, before, told_.arrived);
}

}  // namespace salvor
