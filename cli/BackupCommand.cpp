#include <fmt/format.h>

#include "app/DeviceChoice.h"
#include "app/FreshBackup.h"
#include "app/SalvorAppDelegate.h"
#include "app/ScanJob.h"
#include "cli/Command.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Interrupts.h"
#include "cli/Password.h"
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
        display_.writeLine(withUsefulLine(text, helperSaid));
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
        : given_(given), console_(console), udid_(given["UDID"]), scans_(given.has("--scan")) {
        if (const auto root = given.value("--root")) settings_.root = *root;
        if (const auto helper = given.value("--helper")) readHelper(*helper);
        for (const auto& option : kScanTable.options)
            if (!scans_ && given.has(option.name) && !isForBackup(option.name))
                throw Failure(
                    ExitStatus::BadArguments,
                    fmt::format("{}: belongs to a scan, so it needs --scan", option.name));
        options_ = scanOptionsFor(folderOfDeviceBackup(settings_.root, udid_), given);
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
        const auto choice = requireDevice(access, application.stopToken());
        const auto device = choice.device;
        application.chooseDevice(device);
        if (const auto fault = prepareBackupRoot(settings_.root); !fault.empty())
            throw Failure(ExitStatus::NoDevice, fault);

        if (!options_.quiet && !choice.notice.empty()) console_.warning(choice.notice);
        if (!options_.quiet)
            display.writeLine(fmt::format("Making a backup of {} below {}",
                                          device->deviceName().value_or(udid_),
                                          settings_.root.string()));
        display.start(job.state().progress);
        application.BackupAgent(device->udid().value_or(udid_));
        const auto backup = application.waitForBackup();
        display.finish();
        settle(backup);
        if (!scans_) return ExitStatus::Done;
        options_.request.source = backup.folder;
        options_.request.keys =
            keysFor(backup.folder, given_, console_, Ask::Yes, application.stopToken());
        options_.request.freshBackup = backup.end == FreshBackupEnd::Complete;
        return runAndShow(job, display, options_, console_);
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

    DeviceChoice requireDevice(MobileDeviceAccess& access, const std::stop_token& cancelled) const {
        auto choice = chooseForBackup(access, udid_, cancelled);
        if (choice.obstacle == BackupObstacle::Cancelled || Interrupts::happened())
            throw Failure(ExitStatus::Cancelled, "cancelled");
        if (choice.obstacle == BackupObstacle::NotConnected)
            throw Failure(ExitStatus::NoDevice,
                          choice.text + " (\"salvor devices\" lists those that are)");
        if (choice.obstacle != BackupObstacle::None)
            throw Failure(ExitStatus::NoDevice, choice.text);
        return choice;
    }

    static ExitStatus statusOf(BackupVerdict verdict) {
        switch (verdict) {
            case BackupVerdict::Whole:
                return ExitStatus::Done;
            case BackupVerdict::Cancelled:
                return ExitStatus::Cancelled;
            case BackupVerdict::MissingPropertyLists:
                return ExitStatus::SourceUnusable;
            case BackupVerdict::MaybeNotWhole:
            case BackupVerdict::NothingWritten:
            case BackupVerdict::NotStarted:
            case BackupVerdict::Refused:
                break;
        }
        return ExitStatus::NoDevice;
    }

    /// Names the folder of a whole backup. Throws `Failure` for any other: there is nothing to go
    /// on with.
    void settle(const FreshBackup& backup) const {
        // Where a scan follows, the interrupt is that one's.
        const bool scanFollows = scans_ && backup.end == FreshBackupEnd::Complete;
        const auto judgement =
            judge(backup, settings_.helper, Interrupts::happened() && !scanFollows);
        if (!judgement.isWhole())
            throw Failure(statusOf(judgement.verdict),
                          judgement.verdict == BackupVerdict::MissingPropertyLists
                              ? judgement.text + " (--scan --continue-anyway does)"
                              : judgement.text);
        if (scans_ || options_.quiet) return;
        const std::string folder = backup.folder.string();
        console_.out << (console_.outShown ? printable(folder) : folder) << '\n';
        console_.err << printable("Scan it with: salvor scan " + quoted(folder)) << '\n';
    }

    const Arguments& given_;
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
