#include <fmt/format.h>
#include <optional>

#include "app/SalvorAppDelegate.h"
#include "app/ScanJob.h"
#include "cli/Command.h"
#include "cli/ConnectedDevices.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Interrupts.h"
#include "cli/ScanOptions.h"
#include "cli/ScanRun.h"
#include "device/BackupFolderBridge.h"
#include "device/UsbDeviceFramework.h"

namespace salvor::cli {
namespace {

constexpr auto kHelperHelp =
    "the program that writes the backup, and its arguments: {udid}, {target} (the same in lower "
    "case) and {folder} stand for what they say (default: idevicebackup2 --udid {udid} backup "
    "{folder})";

CommandTable makeTable() {
    CommandTable table{
        "backup",
        "Makes a fresh backup of a connected device.",
        {{"UDID", "the device's identifier, as \"salvor devices\" shows it"}},
        {{"--root", "DIR", "write below this folder instead of where backups usually are"},
         {"--helper", "COMMAND", kHelperHelp},
         {"--scan", nullptr, "scan the backup when it is made; takes the options of a scan:"}},
        "Ctrl-C ends the backup too. A backup that is there already is brought up to date."};
    table.options.insert(table.options.end(), kScanTable.options.begin(), kScanTable.options.end());
    return table;
}

/// Asks at the terminal.
class Questions : public FreshBackupQuestions {
  public:
    Questions(Console& console, ScanDisplay& display, bool continueAnyway)
        : console_(console), display_(display), continueAnyway_(continueAnyway) {}

    bool tryAgain(const std::string& text) override {
        display_.writeLine(text);
        if (!console_.asks) return false;
        display_.writeLine("Press Enter to try again, Ctrl-C to cancel.");
        return console_.enterPressed();
    }
    bool continueAnyway(const std::string& text) override {
        if (continueAnyway_) display_.writeLine(text);
        return continueAnyway_;
    }

  private:
    Console& console_;
    ScanDisplay& display_;
    bool continueAnyway_;
};

/// One run of the command.
class BackupRun {
  public:
    BackupRun(const Arguments& given, Console& console)
        : console_(console), udid_(given["UDID"]), scans_(given.has("--scan")) {
        if (const auto root = given.value("--root")) settings_.root = *root;
        if (const auto helper = given.value("--helper")) readHelper(*helper);
        for (const auto& option : kScanTable.options)
            if (!scans_ && given.has(option.name) && !isForBackup(option.name))
                throw Failure(
                    ExitStatus::BadArguments,
                    fmt::format("{}: belongs to a scan, so it needs --scan", option.name));
        options_ = scanOptionsFor(folderOfDeviceBackup(settings_.root, udid_), given);
        options_.request.freshBackup = true;
    }

    ExitStatus run() {
        RunDisplay display(console_, options_);
        MobileDeviceAccess access(std::make_unique<UsbDeviceFramework>());
        ScanJob job(display);  // ends before `access`, to which it listens
        Questions questions(console_, display, options_.request.continueAnyway);
        const Interrupts interrupts([&job] { job.cancel(); });
        auto& application = job.application();
        application.setFreshBackup(settings_, &questions);
        application.listenForDevices(access);
        const auto device = requireDevice(access, application);
        application.chooseDevice(device);

        if (!options_.quiet)
            display.writeLine(fmt::format("Making a backup of {} below {}",
                                          device->deviceName().value_or(udid_),
                                          settings_.root.string()));
        display.start(job.state().progress);
        application.BackupAgent(device->udid().value_or(udid_));
        const auto backup = application.waitForBackup();
        display.finish();
        const auto status = settle(backup);
        if (!scans_) return status;
        options_.request.source = backup.folder;
        const auto scanned = runAndShow(job, display, options_, console_);
        return scanned == ExitStatus::Done ? status : scanned;
    }

  private:
    static bool isForBackup(std::string_view option) {
        return option == "--quiet" || option == "--no-progress" || option == "--log-level";
    }

    void readHelper(const std::string& text) {
        const auto helper = BackupHelper::parse(text);
        if (!helper) throw Failure(ExitStatus::BadArguments, "--helper: names no program");
        settings_.helper = *helper;
    }

    std::shared_ptr<AMDevice> requireDevice(MobileDeviceAccess& access,
                                            SalvorAppDelegate& application) {
        const auto search = searchDevices(access, application.stopToken());
        requireNoInterrupt();
        requireDaemon(search);
        auto device = findDevice(access, udid_);
        if (!device && !access.unreachable().empty())
            throw Failure(ExitStatus::NoDevice,
                          troubleText("a connected device", access.unreachable().front().status));
        if (!device)
            throw Failure(ExitStatus::NoDevice,
                          fmt::format("{}: no such device is connected (\"salvor devices\" lists "
                                      "those that are)",
                                      udid_));
        const auto summary = describeDevice(*device);
        requireNoInterrupt();
        if (summary.session != kAMDSuccess)
            throw Failure(ExitStatus::NoDevice, troubleText(nameOf(summary), summary.session));
        return device;
    }

    static void requireNoInterrupt() {
        if (Interrupts::happened()) throw Failure(ExitStatus::Cancelled, "cancelled");
    }

    /// Tells how the backup ended; throws `Failure` where there is nothing to go on with.
    ExitStatus settle(const FreshBackup& backup) {
        const std::string folder = backup.folder.string();
        switch (backup.end) {
            case FreshBackupEnd::Cancelled:
                throw Failure(ExitStatus::Cancelled,
                              folder + ": the backup was cancelled and is not whole");
            case FreshBackupEnd::NotStarted:
                throw Failure(ExitStatus::NoDevice,
                              fmt::format("the backup helper could not be started: {} (it is in "
                                          "the package libimobiledevice-utils)",
                                          backup.task.startFailure));
            case FreshBackupEnd::Refused:
                throw Failure(ExitStatus::NoDevice, withLastLine(kPasscodeQuestion, backup.task));
            case FreshBackupEnd::MissingPropertyLists:
                throw Failure(ExitStatus::SourceUnusable,
                              fmt::format("{}: {}", folder, kMissingPropertyListsAfterBackup));
            case FreshBackupEnd::Complete:
                break;
        }
        const bool whole = backup.task.exitStatus == 0;
        if (!whole)
            console_.error(withLastLine(folder + ": " + howItEnded(backup.task), backup.task));
        if (!scans_) {
            console_.out << folder << '\n';
            if (!options_.quiet)
                console_.err << printable(fmt::format("Scan it with: salvor scan '{}'", folder))
                             << '\n';
        }
        return whole ? ExitStatus::Done : ExitStatus::NoDevice;
    }

    static std::string howItEnded(const BackupTaskResult& task) {
        return task.signal ? fmt::format(
                                 "the backup may not be whole: its helper was ended by "
                                 "signal {}",
                                 *task.signal)
                           : fmt::format(
                                 "the backup may not be whole: its helper ended with "
                                 "status {}",
                                 task.exitStatus.value_or(-1));
    }

    static std::string withLastLine(const std::string& text, const BackupTaskResult& task) {
        return task.lastError.empty() ? text : fmt::format("{} ({})", text, task.lastError);
    }

    Console& console_;
    const std::string udid_;
    const bool scans_;
    FreshBackupSettings settings_;
    ScanOptions options_;
};

class BackupCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable = makeTable();
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        return BackupRun(given, console).run();
    }
};

}  // namespace

std::unique_ptr<Command> makeBackupCommand() {
    return std::make_unique<BackupCommand>();
}

}  // namespace salvor::cli
