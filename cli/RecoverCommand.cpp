#include <cmath>
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
#include "cli/JsonText.h"
#include "util/StringUtils.h"

namespace salvor::cli {
namespace {

Json jsonOf(const deep::RecoveredValue& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
    if (const auto* real = std::get_if<double>(&value))
        return std::isfinite(*real) ? Json(*real) : Json(nullptr);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* raw = std::get_if<deep::RawBytes>(&value))
        return {{"hex", StringUtils::ByteArrayToString(raw->bytes)}};
    return nullptr;
}

Json jsonOf(const deep::RowPlace& place) {
    Json object = {{"file", fileName(place.file)},
                   {"page", place.page},
                   {"offset", place.offset},
                   {"length", place.length}};
    if (place.frame != 0) object["frame"] = place.frame;
    object["space"] = deep::toString(place.space);
    return object;
}

std::string lineOf(const deep::Facts& facts, const deep::RecoveredRow& row) {
    const deep::TableFacts& table = facts.tables[row.table];
    Json columns = Json::object();
    for (const auto& column : row.columns)
        columns[table.columns[column.column]] = jsonOf(column.value);
    Json missing = Json::array();
    for (const std::size_t column : row.missing) missing.push_back(table.columns[column]);
    Json origins = Json::array();
    for (const auto& place : row.origins) origins.push_back(jsonOf(place));
    Json object = {{"table", table.name},
                   {"rowId", row.rowId ? Json(*row.rowId) : Json(nullptr)},
                   {"columns", std::move(columns)},
                   {"state", deep::toString(row.state)},
                   {"confidence", deep::toString(row.confidence)},
                   {"reasons", row.reasons},
                   {"missing", std::move(missing)},
                   {"origins", std::move(origins)}};
    return jsonLine(object);
}

Json jsonOf(const deep::TableFacts& table) {
    return {{"table", table.name},      {"dropped", table.dropped}, {"live", table.live},
            {"deleted", table.deleted}, {"earlier", table.earlier}, {"fragments", table.fragments},
            {"certain", table.certain}, {"likely", table.likely},   {"possible", table.possible},
            {"rowsGone", table.gone}};
}

std::string summaryOf(const deep::Facts& facts) {
    constexpr const char* kEncodings[] = {"", "UTF-8", "UTF-16LE", "UTF-16BE"};
    Json tables = Json::array();
    for (const auto& table : facts.tables)
        if (!table.internal) tables.push_back(jsonOf(table));
    const Json object = {{"pageSize", facts.pageSize},
                         {"pages", facts.pages},
                         {"freePages", facts.freePages},
                         {"encoding", kEncodings[static_cast<std::size_t>(facts.encoding)]},
                         {"autoVacuum", facts.incrementalVacuum ? "incremental"
                                        : facts.autoVacuum      ? "full"
                                                                : "none"},
                         {"logFrames", facts.logFrames},
                         {"logFramesInUse", facts.logFramesInUse},
                         {"journalPages", facts.journalPages},
                         {"freeBytes", facts.freeBytes},
                         {"zeroBytes", facts.zeroBytes},
                         {"secureDelete", facts.secureDeleteSeen()},
                         {"cut", facts.cut},
                         {"tables", std::move(tables)},
                         {"facts", facts.sentences()}};
    return jsonLine(object);
}

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
        : console_(console), prints_(!given.has("--summary")) {
        if (const auto path = given.value("--sqlite"))
            guarded([&] { database_ = std::make_unique<RecoveredDatabase>(*path); });
    }

    bool write(const deep::Facts& facts, const deep::RecoveredRow& row) {
        if (prints_) console_.out << lineOf(facts, row);
        if (database_) guarded([&] { database_->add(facts, row); });
        return static_cast<bool>(console_.out);
    }
    void close() {
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

    Console& console_;
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
        const RecoveryOutcome outcome = recoverFile(
            source, options,
            [&](const deep::Facts& facts, const deep::RecoveredRow& row) {
                return output.write(facts, row);
            },
            cancel.get_token());
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
