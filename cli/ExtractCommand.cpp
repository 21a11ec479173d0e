#include <fmt/format.h>
#include <system_error>

#include "app/FileExtraction.h"
#include "app/Outputs.h"
#include "app/Unlocking.h"
#include "backup/BackupLock.h"
#include "backup/BackupSource.h"
#include "cli/Command.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/Interrupts.h"
#include "cli/Password.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;

void requireOutput(const fs::path& folder, const fs::path& backup) {
    if (const auto fault = whyInsideBackup(folder, backup); !fault.empty())
        throw Failure(ExitStatus::BadArguments, "--to " + fault);
    if (const auto fault = whyNoRoom(folder, OutputKind::Folder); !fault.empty())
        throw Failure(ExitStatus::NotWritten, fault);
}

std::string textOf(const ExtractionSummary& summary) {
    std::string text =
        fmt::format("{} files written, {}", summary.written, FileUtils::sizeText(summary.bytes));
    const std::pair<std::size_t, const char*> rest[] = {{summary.missing, "not in the backup"},
                                                        {summary.there, "there already"},
                                                        {summary.locked, "encrypted and locked"},
                                                        {summary.refused, "refused by their names"},
                                                        {summary.failed, "failed"}};
    for (const auto& [count, what] : rest)
        if (count > 0) text += fmt::format("; {} {}", count, what);
    return text;
}

class ExtractCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "extract",
            "Writes files of a backup under their domains and paths.",
            {{"BACKUP", kBackupHelp}},
            {{.name = "--to",
              .value = "DIR",
              .help = "the folder that they are written into; nothing in it is overwritten",
              .required = true},
             {"--domain", "D", "files of this domain alone"},
             {.name = "--path",
              .value = "GLOB",
              .help = "files whose path below the domain matches, * across folders too; several "
                      "may be given",
              .repeats = true},
             kPasswordOption}};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const auto backup = require(findBackupFolder(given["BACKUP"]));
        const fs::path folder = given["--to"];
        requireOutput(folder, backup);
        std::stop_source stop;
        const Interrupts interrupts([&stop] { stop.request_stop(); });
        const auto keys = keysFor(backup, given, console, Ask::Yes, stop.get_token());
        if (keys == nullptr && isEncrypted(backup))
            throw Failure(ExitStatus::Encrypted,
                          fmt::format("{}: {}", backup.string(), kEncryptedAdvice));
        const auto files = openBackup(backup, keys);
        // Older backups are read without their index otherwise.
        const auto own = files->index() == nullptr ? readIndex(backup, *files) : nullptr;
        const BackupIndex& index = own != nullptr ? *own : *files->index();
        if (index.size() == 0 && !index.damage().empty())
            throw Failure(ExitStatus::SourceUnusable,
                          fmt::format("{}: its index: {}", backup.string(), index.damage()));
        if (!index.damage().empty())
            console.warning(
                fmt::format("{}: its index is damaged: {}", backup.string(), index.damage()));

        std::error_code failed;
        fs::create_directories(folder, failed);
        if (failed)
            throw Failure(ExitStatus::NotWritten,
                          fmt::format("{}: {}", folder.string(), failed.message()));
        const ExtractionRequest request{folder, given.value("--domain"), given.all("--path")};
        const auto summary =
            extractFiles(*files, index, request, stop.get_token(),
                         [&console](const std::string& line) { console.warning(line); });
        console.out << textOf(summary) << '\n';
        if (summary.cancelled) return ExitStatus::Cancelled;
        const bool whole = index.damage().empty() && summary.failed + summary.locked == 0;
        return whole ? ExitStatus::Done : ExitStatus::NotAllRead;
    }
};

}  // namespace

std::unique_ptr<Command> makeExtractCommand() {
    return std::make_unique<ExtractCommand>();
}

}  // namespace salvor::cli
