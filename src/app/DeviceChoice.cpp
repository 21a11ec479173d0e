#include "app/DeviceChoice.h"

#include <cerrno>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "device/BackupFolderBridge.h"
#include "device/MuxAddress.h"

namespace salvor {
namespace {

/// "Anna's iPhone (0123...)", or its identifier alone.
std::string nameOf(const DeviceSummary& device) {
    const auto udid = device.UniqueDeviceID.value_or("");
    if (!device.DeviceName) return udid.empty() ? "a device without identifier" : udid;
    return fmt::format("{} ({})", *device.DeviceName, udid.empty() ? "no identifier" : udid);
}

/// What a person does about it, behind the cause; "" where nobody knows.
std::string adviceOn(AMDStatus status, const std::string& udid) {
    if (!meansNotTrusted(status)) return "";
    std::string advice = "; unlock it, confirm there that this computer is trusted, and try again";
    if (meansNotPaired(status) && !udid.empty())
        advice += fmt::format(
            "; if it does not ask, \"idevicepair --udid {} unpair\" forgets the old pairing", udid);
    return advice;
}

std::string troubleText(const DeviceSummary& device) {
    return fmt::format("{}: {}{}", nameOf(device), describeStatus(device.session),
                       adviceOn(device.session, device.UniqueDeviceID.value_or("")));
}

std::string networkText(const std::string& udid) {
    return udid + ": " + describeStatus(kAMDNetworkOnly) + "; plug it in at a USB port";
}

/// Why there is no such device.
DeviceChoice missing(const MobileDeviceAccess& devices, const DeviceSearch& search,
                     const std::string& udid) {
    using enum BackupObstacle;
    const auto* silent = findUnreachable(devices, udid);
    if (silent == nullptr && lists(search.onNetwork, udid))
        return {NetworkOnly, networkText(udid), nullptr, ""};
    if (silent == nullptr) silent = findUnreachable(devices, "");
    DeviceSummary summary;
    summary.session = silent != nullptr ? silent->status : kAMDTimedOut;
    if (silent == nullptr && !lists(search.attached, udid))
        return {NotConnected, udid + ": no such device is connected", nullptr, ""};
    if (silent == nullptr || !silent->attached.udid.empty()) summary.UniqueDeviceID = udid;
    return {Unreachable, troubleText(summary), nullptr, ""};
}

}  // namespace

DeviceChoice chooseForBackup(MobileDeviceAccess& devices, const std::string& udid,
                             const std::stop_token& ended) {
    using enum BackupObstacle;
    const auto search = searchDevices(devices, ended, [&] {
        return findDevice(devices, udid) || findUnreachable(devices, udid) != nullptr;
    });
    if (ended.stop_requested()) return {Cancelled, "cancelled", nullptr, ""};
    if (search.daemon != kAMDSuccess) return {NoDaemon, daemonTrouble(search.daemon), nullptr, ""};
    auto device = findDevice(devices, udid);
    if (!device) return missing(devices, search, udid);
    const auto summary = describeDevice(*device);
    if (ended.stop_requested()) return {Cancelled, "cancelled", nullptr, ""};
    if (summary.session != kAMDSuccess) return {NoSession, troubleText(summary), nullptr, ""};
    if (!namesFolder(device->udid().value_or(udid)))
        return {NamesNoFolder, nameOf(summary) + ": no folder can be named so", nullptr, ""};
    return {
        None, "", std::move(device),
        summary.encryptsBackups
            ? nameOf(summary) +
                  " encrypts its backups, and the databases of an encrypted one cannot be read; "
                  "to scan it, switch the encryption of backups off first"
            : ""};
}

std::string prepareBackupRoot(const std::filesystem::path& root) {
    std::error_code failed;
    std::filesystem::create_directories(root, failed);
    if (!failed && ::access(root.c_str(), W_OK | X_OK) != 0)
        failed = {errno, std::generic_category()};
    if (!failed) return "";
    return fmt::format("{}: no backup can be written there: {}", root.string(), failed.message());
}

std::string daemonTrouble(AMDStatus status) {
    const std::string what =
        status == kAMDNoDaemon
            ? "no multiplexer daemon answers there; install and start usbmuxd, which brings USB "
              "devices to this computer's programs"
            : describeStatus(status) + "; restart usbmuxd";
    return muxAddress() + ": " + what;
}

std::vector<std::string> deviceTroubles(const std::vector<DeviceSummary>& described) {
    std::vector<std::string> texts;
    for (const auto& one : described)
        if (one.session != kAMDSuccess) texts.push_back(troubleText(one));
    return texts;
}

std::vector<std::string> networkNotices(const DeviceSearch& search) {
    std::vector<std::string> texts;
    for (const auto& one : search.onNetwork) texts.push_back(networkText(one.udid));
    return texts;
}

}  // namespace salvor
