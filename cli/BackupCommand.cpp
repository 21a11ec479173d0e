#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <system_error>
#include <unistd.h>

#include "app/SalvorAppDelegate.h"
#include "app/ScanJob.h"
#include "backup/BackupStore.h"
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

std::string withLastLine(const std::string& text, const std::string& line) {
    return line.empty() ? text : fmt::format("{} ({})", text, line);
}

/// A word of a shell's command line.
std::string quoted(const std::string& text) {
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? "'\\''" : std::string(1, c);
    return word + '\'';
}

/// Asks at the terminal.
class Questions : public FreshBackupQuestions {
  public:
    Questions(Console& console, ScanDisplay& display, const ScanProgress& progress,
              const ScanOptions& options)
        : console_(console), display_(display), progress_(progress), options_(options) {}

    bool tryAgain(const std::string& text, const std::string& helperSaid) override {
        if (!console_.asks) return false;  // the text is told with the failure
        display_.finish();                 // nothing is drawn where a person answers
        display_.writeLine(withLastLine(text, helperSaid));
        display_.writeLine("Press Enter to try again, Ctrl-C to cancel.");
        const bool again = console_.enterPressed();
        if (again) display_.start(progress_);
        return again;
    }
    bool continueAnyway(const std::string& text) override {
        const bool goesOn = options_.request.continueAnyway;
        if (goesOn && !options_.quiet) display_.writeLine(text);
        return goesOn;
    }

  private:
    Console& console_;
    ScanDisplay& display_;
    const ScanProgress& progress_;
    const ScanOptions& options_;
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
        Questions questions(console_, display, job.state().progress, options_);
        const Interrupts interrupts([&job] { job.cancel(); });
        auto& application = job.application();
        application.setFreshBackup(settings_, &questions);
        application.listenForDevices(access);
        const auto device = requireDevice(access, application);
        application.chooseDevice(device);
        requireRoot();

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
        if (!namesFolder(device->udid().value_or(udid_)))
            throw Failure(ExitStatus::NoDevice,
                          fmt::format("{}: no folder can be named so", nameOf(summary)));
        return device;
    }

    /// The helper's own words about a folder that it cannot write to would come late and vary.
    void requireRoot() const {
        std::error_code failed;
        std::filesystem::create_directories(settings_.root, failed);
        if (!failed && ::access(settings_.root.c_str(), W_OK | X_OK) != 0)
            failed = {errno, std::generic_category()};
        if (failed)
            throw Failure(ExitStatus::NoDevice,
                          fmt::format("{}: no backup can be written there: {}",
                                      settings_.root.string(), failed.message()));
    }

    static void requireNoInterrupt() {
        if (Interrupts::happened()) throw Failure(ExitStatus::Cancelled, "cancelled");
    }

    static bool isWhole(const HelperResult& task) {
        return task.exitStatus == 0 && !task.cancelled;
    }

    /// Throws `Failure` where there is nothing to go on with.
    void requireComplete(const FreshBackup& backup) const {
        const std::string folder = backup.folder.string();
        const auto& task = backup.task;
        // Where a scan follows, the interrupt is that one's.
        const bool cancelled =
            Interrupts::happened() && !(scans_ && backup.end == FreshBackupEnd::Complete);
        switch (cancelled ? FreshBackupEnd::Cancelled : backup.end) {
            case FreshBackupEnd::Cancelled:
                throw Failure(
                    ExitStatus::Cancelled,
                    folder + (isWhole(task) ? ": cancelled after the backup was made"
                                            : ": the backup was cancelled and is not whole"));
            case FreshBackupEnd::NotStarted:
                throw Failure(ExitStatus::NoDevice, "the backup helper could not be started: " +
                                                        task.startFailure + whereHelperIs());
            case FreshBackupEnd::Refused:
                throw Failure(ExitStatus::NoDevice,
                              withLastLine(kPasscodeQuestion, task.lastError));
            case FreshBackupEnd::MissingPropertyLists:
                throw Failure(ExitStatus::SourceUnusable,
                              fmt::format("{}: {}", folder, kMissingPropertyListsAfterBackup));
            case FreshBackupEnd::Complete:
                break;
        }
    }

    std::string whereHelperIs() const {
        const bool usual = settings_.helper.words == BackupHelper().words;
        return usual ? " (it is in the package libimobiledevice-utils)" : "";
    }

    /// Tells how the backup ended.
    ExitStatus settle(const FreshBackup& backup) {
        requireComplete(backup);
        const std::string folder = backup.folder.string();
        const auto& task = backup.task;
        const auto howItEnded = [&](const char* what) {
            return withLastLine(fmt::format("{}: {}: {}", folder, what, helperEnd(task)),
                                task.lastError);
        };
        if (!BackupStore::resolve(backup.folder))
            throw Failure(ExitStatus::NoDevice, howItEnded("no backup was written there"));
        if (!isWhole(task)) console_.error(howItEnded("the backup may not be whole"));
        if (!scans_ && !options_.quiet) {
            console_.out << folder << '\n';
            console_.err << printable("Scan it with: salvor scan " + quoted(folder)) << '\n';
        }
        return isWhole(task) ? ExitStatus::Done : ExitStatus::NoDevice;
    }

    static std::string helperEnd(const HelperResult& task) {
        return task.signal
                   ? fmt::format("its helper was ended by signal {}", *task.signal)
                   : fmt::format("its helper ended with status {}", task.exitStatus.value_or(-1));
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
