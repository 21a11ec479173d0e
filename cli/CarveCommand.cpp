#include <fmt/format.h>
#include <stop_token>

#include "carving/TableCarver.h"
#include "cli/Command.h"
#include "cli/Failure.h"
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
        auto options = optionsFrom(given);
        if (const auto unknown = spellAsSignatures(signatures, options); !unknown.empty())
            throw Failure(ExitStatus::BadArguments,
                          fmt::format("{}: {}", given["--signatures"], unknown));

        std::stop_source cancel;
        const Interrupts interrupts([&cancel] { cancel.request_stop(); });
        const bool withOrigin = given.has("--origin");
        bool found = false;
        const auto take = [&](const CarvedRow& row) {
            if (cancel.stop_requested()) return;
            found = true;
            console.out << lineOf(row, withOrigin);
            if (!console.out) cancel.request_stop();
        };
        const auto carving = carveTable(signatures, options, file, cancel.get_token(), take);
        if (Interrupts::happened()) return ExitStatus::Cancelled;
        if (!carving.fault.empty())
            throw Failure(ExitStatus::SourceUnusable, fmt::format("{}: {}", file, carving.fault));
        if (!carving.isDatabase && !found)
            throw Failure(ExitStatus::SourceUnusable,
                          fmt::format("{}: is no SQLite database, and no row lies in it", file));
        if (!carving.isDatabase)
            console.warning(
                fmt::format("{}: does not begin like a SQLite database; it was "
                            "searched as if it were one",
                            file));
        return ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeCarveCommand() {
    return std::make_unique<CarveCommand>();
}

}  // namespace salvor::cli
