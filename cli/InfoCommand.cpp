#include "app/Sources.h"
#include "cli/Command.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/JsonText.h"
#include "cli/Password.h"
#include "cli/TextTable.h"
#include "cli/VersionText.h"
#include "report/ScanReport.h"

namespace salvor::cli {
namespace {

void writeText(const std::filesystem::path& folder, const DeviceInfo& device, std::ostream& out) {
    using enum TextTable::Align;
    TextTable table({Left, Left});
    const auto add = [&table](const char* label, const Text& value) {
        if (value && !value->empty()) table.add({label, std::string(*value)});
    };
    add("Device", device.DeviceName);
    add("Display name", device.DisplayName);
    add("Model", device.ProductType);
    table.add({"iOS version", toldVersion(folder)});
    table.add({"Scanned as", "iOS " + scannedVersion(folder, device)});
    add("Serial number", device.SerialNumber);
    add("Identifier", device.UniqueDeviceID);
    add("Phone number", device.PhoneNumber);
    add("SIM card", device.ICICD);
    table.add({"Encrypted", encryptionText(encryptionOf(folder, device))});
    add("Size", device.AssignSize);
    add("Folder", device.BackupLocation);
    table.write(out);
}

class InfoCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "info",
            "Tells which device a backup is of.",
            {{"BACKUP", kBackupHelp}},
            {{"--json", nullptr, "print one JSON object"}, kPasswordOption}};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const auto folder = require(findBackupFolder(given["BACKUP"]));
        const auto [info, isBackup, fault] = describeBackup(folder);
        if (isBackup && given.has("--json")) {
            auto object = ScanReport::device(info.device);
            object["versionTold"] = toldVersionJson(folder);
            console.out << jsonText(object);
        } else if (isBackup) {
            writeText(folder, info.device, console.out);
        }
        // A wrong password ends this with the status for it.
        const auto keys = keysFor(folder, given, console, Ask::No);
        if (keys != nullptr && !given.has("--json"))
            console.out << "The password opens this backup.\n";
        if (!fault.empty()) throw Failure(ExitStatus::SourceUnusable, fault);
        return ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeInfoCommand() {
    return std::make_unique<InfoCommand>();
}

}  // namespace salvor::cli
