#include "cli/ScanOutput.h"

#include <fmt/format.h>
#include <stop_token>

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

/// The saving of one scan's results.
class Saving {
  public:
    Saving(ScanState& state, const ScanOptions& options, const std::stop_token& cancelled,
           const Console& console, ScanDisplay& display)
        : state_(state),
          options_(options),
          cancelled_(cancelled),
          console_(console),
          display_(display) {}

    ExitStatus run() {
        // With the JSON object on standard output nothing else goes there.
        auto& out = options_.jsonOnOut ? console_.err : console_.out;
        if (!options_.quiet) writeTable(state_, options_.request.category, out);
        out.flush();
        if (options_.exports) exportRows(out);
        if (options_.jsonOnOut) printJson();
        if (options_.json) writeJson(*options_.json);
        out.flush();
        if (!written_) return ExitStatus::NotWritten;
        return read_ ? ExitStatus::Done : ExitStatus::NotAllRead;
    }

  private:
    void exportRows(std::ostream& out) {
        display_.startSaving("Exporting");
        const auto done = exportResults(
            state_, *options_.exports,
            {cancelled_,
             [this](const ExportProgress& now) {
                 display_.saved({now.rowsDone, now.rowsTotal, now.filesDone, now.filesTotal});
             },
             nullptr});
        display_.finish();
        for (const auto& text : done.errors) console_.error(text);
        for (const auto& text : done.unreadable) console_.error(text);
        written_ = done.errors.empty();
        read_ = done.unreadable.empty();
        if (options_.quiet) return;
        for (const auto& text : done.notices) console_.warning(text);
        if (!done.folder.empty()) out << printable(done.folder.string()) << '\n' << std::flush;
    }

    WritingReport watch() const {
        return {cancelled_, [this](std::size_t done, std::size_t total) {
                    display_.saved({done, total, 0, 0});
                }};
    }

    /// Whether that went well is judged later.
    void printJson() const {
        if (!options_.quiet) display_.writeLine("Printing the JSON object");
        const std::stop_callback giveUp(cancelled_, console_.giveUpOut);
        ScanReport::write(state_, console_.out, {cancelled_, {}});
        console_.out.flush();
    }

    void writeJson(const std::filesystem::path& file) {
        std::string cause;
        if (!cancelled_.stop_requested()) {
            display_.startSaving("Writing " + file.string());
            cause = FileUtils::writeAtomically(
                file, [this](std::ostream& out) { return ScanReport::write(state_, out, watch()); },
                cancelled_);
            display_.finish();
            if (cause.empty()) return;
        }
        if (cancelled_.stop_requested()) {
            if (!options_.quiet)
                console_.warning(file.string() + ": not written, for it was cancelled");
            return;
        }
        console_.error(fmt::format("{}: {}", file.string(), cause));
        written_ = false;
    }

    ScanState& state_;
    const ScanOptions& options_;
    const std::stop_token& cancelled_;
    const Console& console_;
    ScanDisplay& display_;
    bool written_ = true;
    bool read_ = true;
};

}  // namespace

ExitStatus writeResults(ScanState& state, const ScanOptions& options,
                        const std::stop_token& cancelled, const Console& console,
                        ScanDisplay& display) {
    return Saving(state, options, cancelled, console, display).run();
}

}  // namespace salvor::cli
