#include "cli/ScanOptions.h"

#include <fmt/format.h>

#include "app/Outputs.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/Log.h"
#include "cli/Password.h"
#include "cli/TickedFile.h"
#include "scan/Categories.h"

namespace salvor::cli {

namespace fs = std::filesystem;

const CommandTable kScanTable{
    "scan",
    "Lists what a backup holds, deleted records included, and exports it.",
    {{"BACKUP", kBackupHelp}},
    {{"--category", "C", categoryWords().c_str()},
     {"--export", "DIR",
      "write a CSV file per category, and the pictures, into a new folder in DIR"},
     {"--suffix", "S", "suffix of the exported files (default .csv)"},
     {"--json", "FILE", "write everything as one JSON object; - is standard output"},
     {"--work", "DIR", "make the work folder \"Temp\", with copies of the pictures, in DIR"},
     {"--signatures", "FILE", "table signatures to use instead of the program's own"},
     {"--continue-anyway", nullptr, "scan although property lists are missing"},
     {"--ios", "X.Y|auto", "scan as this version of iOS"},
     {"--ticked", "FILE", "export only the rows that this JSON file lists"},
     kPasswordOption,
     {"--no-progress", nullptr, "no progress line"},
     {"--quiet", nullptr, "no output but errors"},
     {"--log-level", "L", "trace, debug, info, warning (default), error, critical or off"}},
    "The backup is only read. A database that cannot be read whole is named, marked in the table, "
    "and the status is 7. Ctrl-C stops the scan and keeps what was found; a second one ends at "
    "once."};

namespace {

[[noreturn]] void refuse(ExitStatus status, const std::string& text) {
    throw Failure(status, text);
}

void readWords(const Arguments& given, ScanOptions& options) {
    const auto category = given.value("--category").value_or("all");
    const auto code = categoryCode(category);
    if (!code) refuse(ExitStatus::BadArguments, "--category: there is no \"" + category + '"');
    options.request.category = *code;

    if (given.value("--suffix").value_or("").find('/') != std::string::npos)
        refuse(ExitStatus::BadArguments, "--suffix: a file name cannot hold \"/\"");

    if (const auto name = given.value("--log-level")) {
        const auto level = logLevel(*name);
        if (!level) refuse(ExitStatus::BadArguments, "--log-level: there is no \"" + *name + '"');
        options.logLevel = *level;
    }
    options.quiet = given.has("--quiet");
    if (options.quiet) options.logLevel = std::max(options.logLevel, spdlog::level::err);
    options.progress = !options.quiet && !given.has("--no-progress");
}

void readRequest(const Arguments& given, ScanRequest& request) {
    request.continueAnyway = given.has("--continue-anyway");
    request.ios = given.value("--ios");
    if (const auto work = given.value("--work")) request.workFolder = *work;
    request.picturesInPlace = !request.workFolder;
    if (const auto signatures = given.value("--signatures")) {
        requireReadableFile(*signatures);
        request.signatures = *signatures;
    }
}

void readOutputs(const Arguments& given, ScanOptions& options) {
    if (const auto folder = given.value("--export"))
        options.exports = {*folder, given.value("--suffix").value_or(".csv"), std::nullopt};
    if (const auto json = given.value("--json")) {
        options.jsonOnOut = *json == "-";
        if (!options.jsonOnOut) options.json = *json;
    }
    if (const auto ticked = given.value("--ticked")) {
        if (!options.exports)
            refuse(ExitStatus::BadArguments, "--ticked: says what to export, so it needs --export");
        options.exports->ticked = readTickedFile(*ticked);
    }
}

void refuseInside(const char* option, const fs::path& output, const fs::path& backup) {
    const auto fault = whyInsideBackup(output, backup);
    if (!fault.empty()) refuse(ExitStatus::BadArguments, fmt::format("{} {}", option, fault));
}

void refuseInsideBackup(const ScanOptions& options, const fs::path& backup) {
    if (options.exports) refuseInside("--export", options.exports->folder, backup);
    if (options.json) refuseInside("--json", *options.json, backup);
    if (const auto& work = options.request.workFolder) refuseInside("--work", *work, backup);
}

void requireRoom(const fs::path& output, OutputKind kind) {
    const auto fault = whyNoRoom(output, kind);
    if (!fault.empty()) refuse(ExitStatus::NotWritten, fault);
}

}  // namespace

ScanOptions scanOptionsFor(const fs::path& folder, const Arguments& given) {
    ScanOptions options;
    options.request.source = folder;
    readWords(given, options);
    readRequest(given, options.request);
    readOutputs(given, options);
    refuseInsideBackup(options, folder);
    if (options.exports) requireRoom(options.exports->folder, OutputKind::Folder);
    if (options.json) requireRoom(*options.json, OutputKind::File);
    return options;
}

ScanOptions scanOptionsFrom(const Arguments& given) {
    auto options = scanOptionsFor(require(findBackupFolder(given["BACKUP"])), given);
    options.request.source = given["BACKUP"];
    return options;
}

}  // namespace salvor::cli
