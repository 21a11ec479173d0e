#include "cli/ConnectedDevices.h"

#include <fmt/format.h>

#include "cli/Failure.h"
#include "device/UsbDeviceFramework.h"

namespace salvor::cli {

std::string noDaemonText() {
    return fmt::format(
        "{}: no multiplexer daemon answers there; install and start usbmuxd, which brings USB "
        "devices to this computer's programs",
        UsbDeviceFramework::daemonAddress());
}

std::string troubleText(const std::string& name, AMDStatus status) {
    std::string what = fmt::format("{}: {}", name, describeStatus(status));
    if (!meansNotTrusted(status)) return what;
    return what + "; unlock it, confirm there that this computer is trusted, and try again";
}

std::string nameOf(const DeviceSummary& device) {
    return fmt::format("{} ({})", device.DeviceName.value_or("a device"),
                       device.UniqueDeviceID.value_or("without identifier"));
}

void requireDaemon(const DeviceSearch& search) {
    if (search.daemon != kAMDSuccess) throw Failure(ExitStatus::NoDevice, noDaemonText());
}

}  // namespace salvor::cli
