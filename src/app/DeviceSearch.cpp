#include "app/DeviceSearch.h"

#include <algorithm>

#include "device/OpenDevice.h"
#include "util/StringUtils.h"

namespace salvor {

DeviceSearch searchDevices(MobileDeviceAccess& devices, const std::stop_token& ended,
                           std::chrono::milliseconds patience) {
    DeviceSearch search;
    search.daemon = listAttachedDevices(search.attached);
    const auto until = std::chrono::steady_clock::now() + patience;
    while (devices.devices().size() + devices.unreachable().size() < search.attached.size()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (left.count() <= 0 || ended.stop_requested()) break;
        if (!devices.waitForConnection(ended, left)) break;
    }
    return search;
}

std::shared_ptr<AMDevice> findDevice(const MobileDeviceAccess& devices, const std::string& udid) {
    const std::string wanted = StringUtils::lowerCase(udid);
    const auto& all = devices.devices();
    const auto found = std::find_if(all.begin(), all.end(), [&wanted](const auto& one) {
        return StringUtils::lowerCase(one->udid().value_or("")) == wanted;
    });
    return found == all.end() ? nullptr : *found;
}

DeviceSummary describeDevice(AMDevice& device) {
    DeviceSummary summary;
    summary.DeviceName = device.deviceName();
    summary.UniqueDeviceID = device.udid();
    const OpenDevice open(device);
    summary.session = open.status();
    if (!open.connected()) return summary;
    summary.ProductType = textOf(device.publicValueForKey("ProductType"));
    summary.ProductVersion = textOf(device.publicValueForKey("ProductVersion"));
    return summary;
}

}  // namespace salvor
