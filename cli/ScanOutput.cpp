#include "cli/ScanOutput.h"

#include <fmt/format.h>

#include "cli/DisplayText.h"
#include "cli/TextTable.h"
#include "report/ScanReport.h"
#include "scan/Categories.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

std::string markOf(std::optional<ReadOutcome> fault) {
    if (!fault) return {};
    return *fault == ReadOutcome::Unreadable ? toString(*fault) : "partly read";
}

void writeTable(const ScanState& state, std::int32_t code, std::ostream& out) {
    using enum TextTable::Align;
    TextTable table({Left, Right, Right, Left});
    table.add({"Category", "Live", "Deleted"});
    for (const auto& [category, live, deleted] : countRecords(state, code))
        table.add({category.title, std::to_string(live), std::to_string(deleted),
                   markOf(state.fileOutcomes.faultOf(category.category))});
    table.write(out);
}

/// Exports and returns whether every file was written.
bool exportRows(ScanState& state, const ScanOptions& options, const std::stop_token& cancelled,
                std::ostream& out, const Console& console) {
    const auto done = exportResults(state, *options.exports, {cancelled, {}, nullptr});
    for (const auto& text : done.errors) console.error(text);
    if (!options.quiet) {
        for (const auto& text : done.notices) console.warning(text);
        if (!done.folder.empty()) out << printable(done.folder.string()) << '\n';
    }
    return done.errors.empty();
}

/// Writes the JSON object and returns whether that went well; standard output is judged later.
bool writeJson(const ScanState& state, const ScanOptions& options, const std::stop_token& cancelled,
               const Console& console) {
    bool stopped = false;
    const auto write = [&](std::ostream& out) {
        const bool whole = ScanReport::write(state, out, {cancelled, {}});
        stopped = !whole && out.good();
        return whole;
    };
    if (options.jsonOnOut) write(console.out);
    const auto cause = options.json ? FileUtils::writeAtomically(*options.json, write) : "";
    const auto name = options.json ? options.json->string() : "standard output";
    if (stopped && !options.quiet)
        console.warning(name + ": cancelled before the JSON object was whole");
    if (stopped || cause.empty()) return true;
    console.error(fmt::format("{}: {}", name, cause));
    return false;
}

}  // namespace

ExitStatus writeResults(ScanState& state, const ScanOptions& options,
                        const std::stop_token& cancelled, const Console& console) {
    // With the JSON object on standard output nothing else goes there.
    auto& out = options.jsonOnOut ? console.err : console.out;
    if (!options.quiet) writeTable(state, options.request.category, out);
    bool written = true;
    if (options.exports) written = exportRows(state, options, cancelled, out, console);
    written = writeJson(state, options, cancelled, console) && written;
    return written ? ExitStatus::Done : ExitStatus::NotWritten;
}

}  // namespace salvor::cli
