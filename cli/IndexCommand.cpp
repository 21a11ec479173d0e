#include <fmt/format.h>

#include "backup/ParseMbdb.h"
#include "cli/Command.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/JsonText.h"
#include "cli/TextTable.h"
#include "util/MappedFile.h"

namespace salvor::cli {
namespace {

std::string lineOf(const MDFileInfo& file) {
    Json properties = Json::object();
    if (file.dicProperties)
        for (const auto& [name, value] : *file.dicProperties) properties[name] = value;
    const Json object = {{"domain", file.Domain},
                         {"path", file.FileName},
                         {"mode", file.intMode},
                         {"size", file.intfileLen},
                         {"flag", file.intflag},
                         {"mtime", file.intmTime},
                         {"type", static_cast<std::int32_t>(file.RecordType)},
                         {"storedName", file.strHash},
                         {"properties", std::move(properties)}};
    return jsonLine(object);
}

void addRow(TextTable& table, const MDFileInfo& file) {
    table.add({file.strHash, fmt::format("{:06o}", file.intMode), std::to_string(file.intfileLen),
               shownTime(file.intmTime), file.Domain, file.FileName});
}

class IndexCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "index",
            "Lists every file that a backup's index names.",
            {{"FILE-OR-BACKUP", "an index file (Manifest.mbdb) or a backup folder"}},
            {{"--json", nullptr, "print one JSON object a line"}}};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const auto index = require(findIndexFile(given["FILE-OR-BACKUP"]));
        const auto file = MappedFile::open(index);
        using enum TextTable::Align;
        TextTable rows({Left, Right, Right, Left, Left, Left});
        const bool json = given.has("--json");
        std::size_t records = 0;
        const auto end = ParseMbdb::visit(file ? file->bytes() : Bytes(), [&](MDFileInfo&& record) {
            ++records;
            if (!json)
                addRow(rows, record);
            else if (console.out)
                console.out << lineOf(record);
        });
        const auto fault = [&index](const std::string& cause) {
            return Failure(ExitStatus::SourceUnusable, index.string() + ": " + cause);
        };
        if (!file) throw fault("cannot be mapped into memory");
        if (end == ParseMbdb::End::NoIndex)
            throw fault("is no index file (it does not begin with \"mbdb\")");
        rows.write(console.out);
        if (end == ParseMbdb::End::CutShort)
            throw fault(fmt::format("is cut off behind record {}", records));
        return ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeIndexCommand() {
    return std::make_unique<IndexCommand>();
}

}  // namespace salvor::cli
