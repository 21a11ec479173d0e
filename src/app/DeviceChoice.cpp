#include "app/DeviceChoice.h"

#include <cerrno>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "device/BackupFolderBridge.h"
#include "device/UsbDeviceFramework.h"

namespace salvor {
namespace {

constexpr auto kUnnamed = "a connected device";

std::string troubleText(const std::string& name, AMDStatus status) {
    std::string what = fmt::format("{}: {}", name, describeStatus(status));
    if (!meansNotTrusted(status)) return what;
    return what + "; unlock it, confirm there that this computer is trusted, and try again";
}

/// "Anna's iPhone (0123...)", as far as it is known.
std::string nameOf(const DeviceSummary& device) {
    return fmt::format("{} ({})", device.DeviceName.value_or("a device"),
                       device.UniqueDeviceID.value_or("without identifier"));
}

}  // namespace

DeviceChoice chooseForBackup(MobileDeviceAccess& devices, const std::string& udid,
                             const std::stop_token& ended) {
    using enum BackupObstacle;
    const auto search = searchDevices(devices, ended);
    if (ended.stop_requested()) return {Cancelled, "cancelled", nullptr};
    if (search.daemon != kAMDSuccess) return {NoDaemon, noDaemonText(), nullptr};
    auto device = findDevice(devices, udid);
    if (!device && !devices.unreachable().empty())
        return {Unreachable, troubleText(kUnnamed, devices.unreachable().front().status), nullptr};
    if (!device) return {NotConnected, udid + ": no such device is connected", nullptr};
    const auto summary = describeDevice(*device);
    if (ended.stop_requested()) return {Cancelled, "cancelled", nullptr};
    if (summary.session != kAMDSuccess)
        return {NoSession, troubleText(nameOf(summary), summary.session), nullptr};
    if (!namesFolder(device->udid().value_or(udid)))
        return {NamesNoFolder, nameOf(summary) + ": no folder can be named so", nullptr};
    return {None, "", std::move(device)};
}

std::string prepareBackupRoot(const std::filesystem::path& root) {
    std::error_code failed;
    std::filesystem::create_directories(root, failed);
    if (!failed && ::access(root.c_str(), W_OK | X_OK) != 0)
        failed = {errno, std::generic_category()};
    if (!failed) return "";
    return fmt::format("{}: no backup can be written there: {}", root.string(), failed.message());
}

std::string noDaemonText() {
    return fmt::format(
        "{}: no multiplexer daemon answers there; install and start usbmuxd, which brings USB "
        "devices to this computer's programs",
        UsbDeviceFramework::daemonAddress());
}

std::vector<std::string> deviceTroubles(
    const std::vector<DeviceSummary>& described,
    const std::vector<MobileDeviceAccess::Unreachable>& unreachable) {
    std::vector<std::string> texts;
    for (const auto& one : described)
        if (one.session != kAMDSuccess) texts.push_back(troubleText(nameOf(one), one.session));
    for (const auto& one : unreachable) texts.push_back(troubleText(kUnnamed, one.status));
    return texts;
}

}  // namespace salvor
