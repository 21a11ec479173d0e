#include "app/ResultExport.h"

#include <fmt/format.h>

#include "export/ExportCommands.h"

namespace salvor {

ExportReport exportResults(ScanState& state, const ExportRequest& request,
                           const ExportWatch& watch) {
    if (request.ticked) tickRows(state, *request.ticked);
    const auto command = request.ticked ? exportTicked : exportAll;
    const auto done = command(state, request.folder, request.suffix, DateUtils::now(), watch);
    ExportReport report;
    report.folder = done.folder;
    report.whole = done.whole;
    report.cancelled = done.cancelled;
    for (const auto& file : done.failed)
        report.errors.push_back(fmt::format("{}: {}", file.path.string(), file.cause));
    for (const auto& file : done.unreadable)
        report.unreadable.push_back(fmt::format("{}: {}", file.path.string(), file.cause));
    if (done.cancelled)
        report.notices.push_back(fmt::format("{}: the export was cancelled after {} files",
                                             done.folder.string(), done.written.size()));
    else if (!done.whole && !done.folder.empty())
        report.notices.push_back(done.folder.string() + ": the export is not whole");
    for (const auto& category : done.omitted)
        report.notices.push_back(category + ": ticked rows of this category are never exported");
    if (done.missingMedia != 0)
        report.notices.push_back(fmt::format(
            "pictures and videos that the backup lists without a file: {}", done.missingMedia));
    return report;
}

}  // namespace salvor
