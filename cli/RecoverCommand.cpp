#include <fmt/format.h>
#include <memory>
#include <stop_token>

#include "app/RecoverFile.h"
#include "app/RecoveredDatabase.h"
#include "carving/deep/SqlTokens.h"
#include "cli/Command.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/Interrupts.h"
#include "cli/RecoverOutput.h"

namespace salvor::cli {
namespace {

RecoverySource sourceFrom(const Arguments& given) {
    RecoverySource source;
    source.database = given["DBFILE"];
    requireReadableFile(source.database);
    if (const auto log = given.value("--wal")) source.log = *log;
    if (const auto journal = given.value("--journal")) source.journal = *journal;
    for (const auto& file : {source.log, source.journal})
        if (file) requireReadableFile(*file);
    return source;
}

/// Hands rows to standard output and to the new database, and keeps why one of them could not.
class RowOutput {
  public:
    RowOutput(const Arguments& given, Console& console)
        : stream_(console.out), prints_(!given.has("--summary")) {
        if (const auto path = given.value("--sqlite"))
            guarded([&] { database_ = std::make_unique<RecoveredDatabase>(*path); });
    }

    /// Whether rows are wanted at all.
    bool wanted() const { return prints_ || database_; }
    bool write(const deep::Facts& facts, const deep::RecoveredRow& row) {
        if (prints_) writeRow(facts, row, stream_);
        if (database_) guarded([&] { database_->add(facts, row); });
        return !stream_.ended();
    }
    void close() {
        stream_.flush();
        if (database_) guarded([&] { database_->close(); });
    }

  private:
    template <class Step>
    void guarded(Step&& step) {
        try {
            step();
        } catch (const std::runtime_error& error) {
            throw Failure(ExitStatus::NotWritten, error.what());
        }
    }

    json::JsonStream stream_;
    bool prints_;
    std::unique_ptr<RecoveredDatabase> database_;
};

void warnOfTables(const std::vector<std::string>& asked, const deep::Facts& facts,
                  const Console& console) {
    for (const auto& name : asked) {
        bool known = false;
        for (const auto& table : facts.tables) known |= deep::equalNames(table.name, name);
        if (!known) console.warning(fmt::format("--table: there is no table \"{}\"", name));
    }
}

class RecoverCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "recover",
            "Finds the deleted rows of any SQLite file by its own schema.",
            {{"DBFILE", "the database file"}},
            {{"--wal", "FILE", "its write-ahead log; DBFILE-wal when it is there"},
             {"--journal", "FILE", "its rollback journal; DBFILE-journal when it is there"},
             {"--table", "NAME", "only this table; may be given again", false, true},
             {"--live", nullptr, "list the live rows as well"},
             {"--fragments", nullptr, "list what is left of rows that cannot be rebuilt"},
             {"--summary", nullptr, "print counts and facts in place of the rows"},
             {"--sqlite", "OUT.db", "write the rows into a new database as well"}},
            "Prints one JSON object a line, by table, row id and offset. DBFILE is only read, and "
            "nothing is written beside it."};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const RecoverySource source = sourceFrom(given);
        deep::RecoveryOptions options;
        options.tables = given.all("--table");
        options.live = given.has("--live");
        options.fragments = given.has("--fragments");
        RowOutput output(given, console);
        std::stop_source cancel;
        const Interrupts interrupts([&cancel] { cancel.request_stop(); });
        deep::RowSink sink;
        if (output.wanted())
            sink = [&](const deep::Facts& facts, const deep::RecoveredRow& row) {
                return output.write(facts, row);
            };
        const RecoveryOutcome outcome = recoverFile(source, options, sink, cancel.get_token());
        if (!outcome.fault.empty()) throw Failure(ExitStatus::SourceUnusable, outcome.fault);
        output.close();
        for (const auto& warning : outcome.warnings) console.warning(warning);
        warnOfTables(options.tables, outcome.facts, console);
        if (given.has("--summary")) console.out << summaryOf(outcome.facts);
        return Interrupts::happened() ? ExitStatus::Cancelled : ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeRecoverCommand() {
    return std::make_unique<RecoverCommand>();
}

}  // namespace salvor::cli
