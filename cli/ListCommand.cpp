#include <vector>

#include "app/Sources.h"
#include "cli/Command.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/JsonText.h"
#include "cli/TextTable.h"
#include "cli/VersionText.h"
#include "report/ScanReport.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

void writeText(const std::vector<BackupEntry>& entries, std::ostream& out) {
    using enum TextTable::Align;
    TextTable table({Left, Left, Left, Left, Right, Left, Left});
    table.add({"Device", "iOS", "Scanned as", "Last change", "Size", "Encrypted", "Folder"});
    for (const auto& entry : entries)
        table.add({entry.device.DeviceName.value_or("-"), toldVersion(entry.path),
                   scannedVersion(entry.path, entry.device), shownTime(entry.lastModified),
                   FileUtils::sizeText(entry.sizeInBytes),
                   encryptionText(encryptionOf(entry.path, entry.device)), entry.path.string()});
    table.write(out);
}

class ListCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "list",
            "Lists the backups of this computer.",
            {},
            {{"--root", "DIR", "look in this folder instead of where backups usually are"},
             {"--json", nullptr, "print a JSON array"}}};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const auto root = given.value("--root");
        if (root) requireReadableFolder(*root);
        const auto [entries, faults] = findBackups(root);
        if (given.has("--json")) {
            auto array = Json::array();
            for (const auto& entry : entries)
                array.push_back({{"path", entry.path.string()},
                                 {"device", ScanReport::device(entry.device)},
                                 {"versionTold", toldVersionJson(entry.path)},
                                 {"sizeInBytes", entry.sizeInBytes},
                                 {"lastModified", entry.lastModified}});
            console.out << jsonText(array);
        } else if (!entries.empty()) {
            writeText(entries, console.out);
        } else if (faults.empty()) {
            console.err << "No backup found" << (root ? " in " + printable(*root) : "") << ".\n";
        }
        if (entries.empty() && !faults.empty())
            throw Failure(ExitStatus::SourceUnusable, faults.front());
        for (const auto& fault : faults) console.warning(fault);
        return ExitStatus::Done;
    }
};

}  // namespace

std::unique_ptr<Command> makeListCommand() {
    return std::make_unique<ListCommand>();
}

}  // namespace salvor::cli
