#include <fmt/format.h>
#include <stop_token>

#include "carving/TableCarver.h"
#include "cli/Command.h"
#include "cli/Inputs.h"
#include "cli/Interrupts.h"
#include "cli/JsonText.h"

namespace salvor::cli {
namespace {

Json jsonOf(const OptionalColumnValue& value) {
    if (!value) return nullptr;
    return std::visit([](const auto& held) { return Json(held); }, *value);
}

std::string lineOf(const CarvedRow& row, bool withOrigin) {
    Json columns = Json::object();
    for (const auto& [name, value] : row.columns) columns[name] = jsonOf(value);
    Json object = {{"rowId", row.rowId}, {"columns", std::move(columns)}};
    if (withOrigin)
        object["origin"] = {{"offset", row.origin.offset},
                            {"page", row.origin.page},
                            {"space", toString(row.origin.space)}};
    return jsonLine(object);
}

TableCarveOptions optionsFrom(const Arguments& given) {
    TableCarveOptions options;
    options.domain = given["--domain"];
    options.database = given["--database"];
    options.table = given["--table"];
    options.version = given.value("--version");
    options.fullSearch = given.has("--full-search");
    options.callList = given.has("--call-list");
    return options;
}

class CarveCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "carve",
            "Carves the deleted rows of one table out of one SQLite file.",
            {{"DBFILE", "the database file"}},
            {{"--signatures", "FILE", "the table signatures", true},
             {"--domain", "D", "backup domain of the signature", true},
             {"--database", "NAME", "database name of the signature", true},
             {"--table", "T", "table name of the signature", true},
             {"--version", "V", "use only the patterns of this version, such as iOS6"},
             {"--full-search", nullptr, "search every page whole"},
             {"--call-list", nullptr, "read freeblocks as in the call-list step"},
             {"--origin", nullptr, "tell where in the file each row was found"}},
            "Prints one JSON object a line, in the order in which the rows are found."};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const auto signatures = readSignatures(given["--signatures"], console);
        const auto& file = given["DBFILE"];
        requireReadableFile(file);
        const auto options = optionsFrom(given);
        if (signatures.Find(options.domain, options.database, options.table) == nullptr)
            console.warning(fmt::format("{}: no signature for {}, {}, {}: nothing is searched",
                                        given["--signatures"], options.domain, options.database,
                                        options.table));

        std::stop_source cancel;
        const Interrupts interrupts([&cancel] { cancel.request_stop(); });
        const bool withOrigin = given.has("--origin");
        carveTable(signatures, options, file, cancel.get_token(), [&](const CarvedRow& row) {
            if (cancel.stop_requested()) return;
            console.out << lineOf(row, withOrigin);
            if (!console.out) cancel.request_stop();
        });
        return Interrupts::happened() ? ExitStatus::Cancelled : ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeCarveCommand() {
    return std::make_unique<CarveCommand>();
}

}  // namespace salvor::cli
