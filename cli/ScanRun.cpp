#include "cli/ScanRun.h"

#include <fmt/format.h>

#include "app/SalvorAppDelegate.h"
#include "app/ScanSummary.h"
#include "app/Sources.h"
#include "cli/Failure.h"
#include "cli/Interrupts.h"
#include "cli/Log.h"
#include "cli/ScanOutput.h"

namespace salvor::cli {
namespace {

std::string missingListsText(const ScanOutcome& outcome) {
    const auto below = backupsBelow(outcome.backup);
    return fmt::format("{}: {} (--continue-anyway does){}{}", outcome.backup.string(),
                       outcome.message, below.empty() ? "" : "; ", below);
}

/// Ends the command for a scan that never began.
void refuseUnlessRun(const ScanOutcome& outcome) {
    switch (outcome.result) {
        case ScanResult::InvalidRequest:
            throw Failure(ExitStatus::BadArguments, outcome.message);
        case ScanResult::MissingPropertyLists:
            throw Failure(ExitStatus::SourceUnusable, missingListsText(outcome));
        case ScanResult::SourceUnusable:
            throw Failure(ExitStatus::SourceUnusable, outcome.message);
        case ScanResult::WorkFolderRefused:
            throw Failure(ExitStatus::NotWritten, outcome.message);
        case ScanResult::Done:
        case ScanResult::Cancelled:
        case ScanResult::Failed:
            break;
    }
}

/// Of several reasons the one that says most about the whole result.
ExitStatus statusOf(const ScanOutcome& outcome, const ScanState& state, ExitStatus saved) {
    if (outcome.result == ScanResult::Failed) return ExitStatus::Failed;
    if (outcome.encrypted) return ExitStatus::Encrypted;
    if (saved == ExitStatus::NotWritten || state.picturesNotCopied > 0)
        return ExitStatus::NotWritten;
    if (saved != ExitStatus::Done) return saved;
    return state.fileOutcomes.anyFault() ? ExitStatus::NotAllRead : ExitStatus::Done;
}

const char* whatIsMissing(ExitStatus status) {
    if (status == ExitStatus::NotWritten) return " Not everything could be written.";
    return status == ExitStatus::NotAllRead ? " Not everything could be read." : "";
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

    if (!options.quiet && outcome.versionUnknown)
        console.warning(versionNotice(outcome) +
                        " (--ios auto uses what is there, --ios X.Y sets it)");
    const bool cancelled = outcome.result == ScanResult::Cancelled || Interrupts::happened();
    // What a cancelled scan found is saved; a signal that comes later ends the saving.
    const auto ended = cancelled ? std::stop_token() : job.application().stopToken();
    const auto saved = writeResults(job.state(), options, ended, console, display);
    if (outcome.encrypted)
        console.error(fmt::format("{}: {}", outcome.backup.string(), kEncryptedAdvice));
    const bool ends = cancelled || Interrupts::happened();
    const auto status = ends ? ExitStatus::Cancelled : statusOf(outcome, job.state(), saved);
    if (!options.quiet)
        console.err << summaryText(job.state(), options.request.category,
                                   ends ? ScanResult::Cancelled : outcome.result, display.elapsed())
                    << whatIsMissing(status) << '\n'
                    << std::flush;
    return status;
}

}  // namespace salvor::cli
