#include "app/SalvorAppDelegate.h"
#include "app/ScanJob.h"
#include "cli/Command.h"
#include "cli/Inputs.h"
#include "cli/Interrupts.h"
#include "cli/Password.h"
#include "cli/ScanOptions.h"
#include "cli/ScanRun.h"

namespace salvor::cli {
namespace {

class ScanCommand : public Command {
  public:
    const CommandTable& table() const override { return kScanTable; }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        auto options = scanOptionsFrom(given);
        RunDisplay display(console, options);
        ScanJob job(display);
        const Interrupts interrupts([&job] { job.cancel(); });
        options.request.keys = keysFor(require(findBackupFolder(given["BACKUP"])), given, console,
                                       Ask::Yes, job.application().stopToken());
        return runAndShow(job, display, options, console);
    }
};

}  // namespace

std::unique_ptr<Command> makeScanCommand() {
    return std::make_unique<ScanCommand>();
}

}  // namespace salvor::cli
