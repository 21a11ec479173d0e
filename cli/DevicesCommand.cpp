#include <stop_token>
#include <vector>

#include "app/DeviceChoice.h"
#include "cli/Command.h"
#include "cli/Failure.h"
#include "cli/Interrupts.h"
#include "cli/JsonText.h"
#include "cli/TextTable.h"
#include "device/UsbDeviceFramework.h"

namespace salvor::cli {
namespace {

void writeJson(const std::vector<DeviceSummary>& devices, std::ostream& out) {
    auto array = Json::array();
    for (const auto& one : devices)
        array.push_back({{"DeviceName", jsonOf(one.DeviceName)},
                         {"UniqueDeviceID", jsonOf(one.UniqueDeviceID)},
                         {"ProductType", jsonOf(one.ProductType)},
                         {"ProductVersion", jsonOf(one.ProductVersion)}});
    out << jsonText(array);
}

void writeText(const std::vector<DeviceSummary>& devices, std::ostream& out) {
    using enum TextTable::Align;
    TextTable table({Left, Left, Left, Left});
    table.add({"Device", "Type", "iOS", "Identifier"});
    for (const auto& one : devices)
        table.add({one.DeviceName.value_or("-"), one.ProductType.value_or("-"),
                   one.ProductVersion.value_or("-"), one.UniqueDeviceID.value_or("-")});
    table.write(out);
}

class DevicesCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{"devices",
                                         "Lists the devices that are connected.",
                                         {},
                                         {{"--json", nullptr, "print a JSON array"}},
                                         "A device is read only if it trusts this computer; the "
                                         "first time it asks for that on its screen."};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        std::stop_source stop;
        const Interrupts interrupts([&stop] { stop.request_stop(); });
        MobileDeviceAccess access(std::make_unique<UsbDeviceFramework>());
        access.framework().endWith(stop.get_token());
        DeviceListener nobody;
        access.setListener(&nobody);
        const auto search = searchDevices(access, stop.get_token());
        if (search.daemon != kAMDSuccess) {
            if (Interrupts::happened()) return ExitStatus::Cancelled;
            throw Failure(ExitStatus::NoDevice, daemonTrouble(search.daemon));
        }
        const auto devices = describeDevices(access, search);
        if (Interrupts::happened()) return ExitStatus::Cancelled;
        show(devices, given.has("--json"), console);
        for (const auto& text : networkNotices(search)) console.warning(text);
        const auto troubles = deviceTroubles(devices);
        for (const auto& text : troubles) console.error(text);
        return troubles.empty() ? ExitStatus::Done : ExitStatus::NoDevice;
    }

  private:
    static void show(const std::vector<DeviceSummary>& devices, bool json, Console& console) {
        if (json) {
            writeJson(devices, console.out);
        } else if (!devices.empty()) {
            writeText(devices, console.out);
        } else {
            console.err << "No device is connected.\n";
        }
    }
};

}  // namespace

std::unique_ptr<Command> makeDevicesCommand() {
    return std::make_unique<DevicesCommand>();
}

}  // namespace salvor::cli
