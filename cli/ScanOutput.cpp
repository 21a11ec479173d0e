#include "cli/ScanOutput.h"

#include <fmt/format.h>

#include "cli/DisplayText.h"
#include "cli/TextTable.h"
#include "export/ExportCommands.h"
#include "report/ScanReport.h"
#include "scan/Categories.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

void writeTable(const ScanState& state, std::int32_t code, std::ostream& out) {
    using enum TextTable::Align;
    TextTable table({Left, Right, Right});
    table.add({"Category", "Live", "Deleted"});
    for (const auto& [category, live, deleted] : countRecords(state, code))
        table.add({category.title, std::to_string(live), std::to_string(deleted)});
    table.write(out);
}

/// Exports and returns whether every file was written.
bool exportRows(ScanState& state, const ScanOptions& options, std::ostream& out,
                const Console& console) {
    if (options.ticked) tickRows(state, *options.ticked);
    const auto command = options.ticked ? exportTicked : exportAll;
    const auto done = command(state, *options.exportFolder, options.suffix, DateUtils::now());
    for (const auto& file : done.failed)
        console.error(fmt::format("{}: {}", file.path.string(), file.cause));
    if (!options.quiet) {
        for (const auto& category : done.omitted)
            console.warning(category + ": ticked rows of this category are never exported");
        if (done.missingMedia != 0)
            console.warning(fmt::format(
                "pictures and videos that the backup lists without a file: {}", done.missingMedia));
        if (!done.folder.empty()) out << printable(done.folder.string()) << '\n';
    }
    return done.failed.empty();
}

/// Writes the JSON object and returns whether that went well; standard output is judged later.
bool writeJson(const ScanState& state, const ScanOptions& options, const Console& console) {
    if (options.jsonOnOut) console.out << ScanReport::text(state);
    if (!options.json) return true;
    const auto cause = FileUtils::writeAtomically(*options.json, ScanReport::text(state));
    if (!cause.empty()) console.error(fmt::format("{}: {}", options.json->string(), cause));
    return cause.empty();
}

}  // namespace

ExitStatus writeResults(ScanState& state, const ScanOptions& options, const Console& console) {
    // With the JSON object on standard output nothing else goes there.
    auto& out = options.jsonOnOut ? console.err : console.out;
    if (!options.quiet) writeTable(state, options.request.category, out);
    bool written = true;
    if (options.exportFolder) written = exportRows(state, options, out, console);
    written = writeJson(state, options, console) && written;
    return written ? ExitStatus::Done : ExitStatus::NotWritten;
}

}  // namespace salvor::cli
