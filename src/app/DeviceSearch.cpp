#include "app/DeviceSearch.h"

#include <algorithm>
#include <thread>

#include "device/OpenDevice.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

bool isSame(std::string_view udid, const std::string& other) {
    return StringUtils::lowerCase(std::string(udid)) == StringUtils::lowerCase(other);
}

AMDStatus listInto(DeviceSearch& search, MobileDeviceAccess& devices) {
    std::vector<AttachedDevice> all;
    const AMDStatus status = devices.framework().listDevices(all);
    if (status != kAMDSuccess) return status;
    const auto network = std::stable_partition(all.begin(), all.end(),
                                               [](const auto& one) { return !one.overNetwork; });
    search.attached.assign(all.begin(), network);
    search.onNetwork.assign(network, all.end());
    std::erase_if(search.onNetwork,
                  [&](const auto& one) { return lists(search.attached, one.udid); });
    return kAMDSuccess;
}

DeviceSummary unanswered(const AttachedDevice& device, AMDStatus status) {
    DeviceSummary summary;
    if (!device.udid.empty()) summary.UniqueDeviceID = device.udid;
    summary.session = status;
    return summary;
}

}  // namespace

DeviceSearch searchDevices(MobileDeviceAccess& devices, const std::stop_token& ended,
                           const std::function<bool()>& enough,
                           std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds kBetweenLists{1000};
    DeviceSearch search;
    search.daemon = listInto(search, devices);
    const auto until = std::chrono::steady_clock::now() + patience;
    while (devices.devices().size() + devices.unreachable().size() < search.attached.size()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (left.count() <= 0 || ended.stop_requested() || (enough && enough())) break;
        if (!devices.waitForConnection(ended, std::min(left, kBetweenLists))) break;
        // What has been pulled out meanwhile is not waited for.
        if (const AMDStatus now = listInto(search, devices); now == kAMDNoDaemon) {
            search.daemon = now;
            break;
        }
    }
    return search;
}

std::shared_ptr<AMDevice> findDevice(const MobileDeviceAccess& devices, const std::string& udid) {
    const auto& all = devices.devices();
    const auto found = std::find_if(all.begin(), all.end(), [&udid](const auto& one) {
        return isSame(one->udid().value_or(""), udid);
    });
    return found == all.end() ? nullptr : *found;
}

const MobileDeviceAccess::Unreachable* findUnreachable(const MobileDeviceAccess& devices,
                                                       const std::string& udid) {
    const auto& all = devices.unreachable();
    const auto found = std::find_if(all.begin(), all.end(), [&udid](const auto& one) {
        return isSame(one.attached.udid, udid);
    });
    return found == all.end() ? nullptr : &*found;
}

bool lists(const std::vector<AttachedDevice>& devices, const std::string& udid) {
    return std::any_of(devices.begin(), devices.end(),
                       [&udid](const auto& one) { return isSame(one.udid, udid); });
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
    if (!open.inSession()) return summary;
    const auto encrypts = device.deviceValueForKey("WillEncrypt", "com.apple.mobile.backup");
    summary.encryptsBackups = encrypts && encrypts->truth();
    return summary;
}

std::vector<DeviceSummary> describeDevices(const MobileDeviceAccess& devices,
                                           const DeviceSearch& search) {
    const auto& reached = devices.devices();
    std::vector<DeviceSummary> summaries(reached.size());
    {
        std::vector<std::jthread> asking;
        for (std::size_t i = 0; i < reached.size(); ++i)
            asking.emplace_back(
                [&summaries, &reached, i] { summaries[i] = describeDevice(*reached[i]); });
    }
    for (const auto& one : devices.unreachable())
        summaries.push_back(unanswered(one.attached, one.status));
    for (const auto& one : search.attached) {
        if (!findDevice(devices, one.udid) && findUnreachable(devices, one.udid) == nullptr &&
            summaries.size() < search.attached.size())
            summaries.push_back(unanswered(one, kAMDTimedOut));
    }
    const auto placeOf = [&search](const DeviceSummary& one) {
        const auto& all = search.attached;
        return std::find_if(all.begin(), all.end(), [&one](const auto& other) {
            return isSame(one.UniqueDeviceID.value_or(""), other.udid);
        });
    };
    std::stable_sort(summaries.begin(), summaries.end(),
                     [&](const auto& a, const auto& b) { return placeOf(a) < placeOf(b); });
    return summaries;
}

}  // namespace salvor
