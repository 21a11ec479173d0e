#include "cli/ScanRun.h"

#include <fmt/format.h>

#include "cli/DeviceText.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Interrupts.h"
#include "cli/Log.h"
#include "cli/ScanOutput.h"
#include "scan/Categories.h"

namespace salvor::cli {
namespace {

/// Ends the command for a scan that never began.
void refuseUnlessRun(const ScanOutcome& outcome) {
    switch (outcome.result) {
        case ScanResult::InvalidRequest:
            throw Failure(ExitStatus::BadArguments, outcome.message);
        case ScanResult::MissingPropertyLists:
            throw Failure(ExitStatus::SourceUnusable,
                          fmt::format("{}: {}", outcome.backup.string(), outcome.message));
        case ScanResult::SourceUnusable:
            throw Failure(ExitStatus::SourceUnusable, outcome.message);
        case ScanResult::WorkFolderRefused:
            throw Failure(ExitStatus::NotWritten, outcome.message);
        case ScanResult::Done:
        case ScanResult::Cancelled:
            break;
    }
}

std::string versionNotice(const ScanOutcome& outcome) {
    const auto shown = [](const Text& version) { return version.value_or("no version"); };
    return fmt::format(
        "{}: scanned as iOS 0.0, for the version is not where it is read; Info.plist says {}, the "
        "manifest's Lockdown dictionary {} (--ios auto uses what is there, --ios X.Y sets it)",
        outcome.backup.string(), shown(outcome.versions.infoPlist),
        shown(outcome.versions.lockdown));
}

std::string summary(const ScanState& state, std::int32_t code, bool cancelled,
                    std::chrono::milliseconds elapsed) {
    std::size_t live = 0;
    std::size_t deleted = 0;
    for (const auto& one : countRecords(state, code)) {
        live += one.live;
        deleted += one.deleted;
    }
    return fmt::format(
        "{} after {:.1f} s: {} live and {} deleted records.", cancelled ? "Cancelled" : "Done",
        static_cast<double>(elapsed.count()) / 1000, shownCount(live), shownCount(deleted));
}

}  // namespace

RunDisplay::RunDisplay(Console& console, const ScanOptions& options)
    : ScanDisplay(console, {.texts = !options.quiet, .line = options.progress}) {
    setLog(makeLog(options.logLevel, [this](std::string_view line) { writeLine(line); }));
}

ExitStatus runAndShow(ScanJob& job, RunDisplay& display, const ScanOptions& options,
                      Console& console) {
    display.start(job.state().progress);
    const auto outcome = job.runScan(options.request);
    display.finish();
    refuseUnlessRun(outcome);

    if (!options.quiet && outcome.versionUnknown) console.warning(versionNotice(outcome));
    const bool cancelled = outcome.result == ScanResult::Cancelled || Interrupts::happened();
    if (!options.quiet)
        console.err << summary(job.state(), options.request.category, cancelled, display.elapsed())
                    << '\n'
                    << std::flush;
    const auto written = writeResults(job.state(), options, console);
    if (outcome.encrypted)
        console.error(fmt::format("{}: {}", outcome.backup.string(), kEncryptedAdvice));
    if (written != ExitStatus::Done) return written;
    // One that came while the results were written is told as well.
    if (cancelled || Interrupts::happened()) return ExitStatus::Cancelled;
    return outcome.encrypted ? ExitStatus::Encrypted : ExitStatus::Done;
}

}  // namespace salvor::cli
