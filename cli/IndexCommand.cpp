#include <fmt/format.h>

#include "app/Unlocking.h"
#include "backup/BackupPaths.h"
#include "backup/BackupSource.h"
#include "backup/FileKind.h"
#include "backup/ParseMbdb.h"
#include "cli/Command.h"
#include "cli/DisplayText.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/JsonText.h"
#include "cli/Password.h"
#include "cli/TextTable.h"
#include "scan/BackupIndex.h"
#include "util/MappedFile.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;

/// One line of the list, whichever index it comes from.
struct Listed {
    std::string domain;
    std::string path;
    std::uint32_t mode = 0;
    std::uint64_t size = 0;
    std::uint32_t flag = 0;
    std::int64_t modified = 0;
    std::int32_t type = 0;
    std::string storedName;
    Json properties = Json::object();
    const char* kind = nullptr;  ///< null where the index does not tell it
    Text target;                 ///< of a link
};

Listed listed(const MDFileInfo& file) {
    Listed line{file.Domain,
                file.FileName,
                file.intMode,
                file.intfileLen,
                file.intflag,
                file.intmTime,
                static_cast<std::int32_t>(file.RecordType),
                file.strHash,
                Json::object(),
                nullptr,
                {}};
    if (file.dicProperties)
        for (const auto& [name, value] : *file.dicProperties) line.properties[name] = value;
    return line;
}

/// The size is that of the stored file, where there is one: the index is wrong for some.
Listed listed(const IndexEntry& entry, const EntryDetails& details, const BackupFiles& files) {
    const std::string path = entry.path.value_or("");
    Listed line{entry.domain.value_or(""),
                path,
                details.mode,
                static_cast<std::uint64_t>(details.size),
                details.protectionClass,
                details.modified,
                static_cast<std::int32_t>(classifyFile(details.mode, path)),
                entry.storedName.value_or(""),
                Json::object(),
                toString(entry.kind),
                details.linkTarget};
    if (entry.kind != EntryKind::File) return line;
    if (const auto facts = files.find(line.storedName)) line.size = facts.size;
    return line;
}

/// Writes lines as they come, or all of them as a table at the end.
class Listing {
  public:
    Listing(Console& console, bool json) : console_(console), json_(json) {}

    void add(Listed&& file) {
        if (!json_)
            rows_.add({file.storedName, fmt::format("{:06o}", file.mode), std::to_string(file.size),
                       shownTime(file.modified), file.domain, file.path});
        else if (console_.out)
            console_.out << lineOf(std::move(file));
    }
    void finish() const { rows_.write(console_.out); }

  private:
    static std::string lineOf(Listed&& file) {
        Json object = {{"domain", file.domain},
                       {"path", file.path},
                       {"mode", file.mode},
                       {"size", file.size},
                       {"flag", file.flag},
                       {"mtime", file.modified},
                       {"type", file.type},
                       {"storedName", file.storedName},
                       {"properties", std::move(file.properties)}};
        if (file.kind != nullptr) object["kind"] = file.kind;
        if (file.target) object["target"] = *file.target;
        return jsonLine(object);
    }

    Console& console_;
    bool json_;
    TextTable rows_{{TextTable::Align::Left, TextTable::Align::Right, TextTable::Align::Right,
                     TextTable::Align::Left, TextTable::Align::Left, TextTable::Align::Left}};
};

/// The backup whose index is a database that `named` names by its folder, a property list in it or
/// the database itself; nothing for every other source.
std::optional<fs::path> databaseBackup(const fs::path& named) {
    auto folder = BackupStore::resolve(named);
    if (!folder && !isReadableFolder(named))
        folder = named.has_parent_path() ? named.parent_path() : fs::path(".");
    const auto index = BackupStore::databaseIndex(*folder);
    std::error_code different;
    if (!index || (!isReadableFolder(named) && BackupStore::resolve(named) == std::nullopt &&
                   !fs::equivalent(*index, named, different)))
        return std::nullopt;
    return folder;
}

ExitStatus listDatabase(const fs::path& backup, const Arguments& given, Console& console) {
    const auto keys = keysFor(backup, given, console, Ask::Yes);
    const auto files = openBackup(backup, keys);
    const BackupIndex& index = *files->index();
    const bool locked = keys == nullptr && isEncrypted(backup);
    Listing listing(console, given.has("--json"));
    for (std::size_t i = 0; i < index.size() && console.out; ++i)
        listing.add(listed(index.entry(i), index.details(i), *files));
    listing.finish();
    if (locked)
        throw Failure(ExitStatus::Encrypted,
                      fmt::format("{}: {}", backup.string(), kEncryptedAdvice));
    if (index.damage().empty()) return ExitStatus::Done;
    const auto fault = fmt::format("{}: its Manifest.db: {}", backup.string(), index.damage());
    if (index.size() == 0) throw Failure(ExitStatus::SourceUnusable, fault);
    console.error(fault);
    return ExitStatus::NotAllRead;
}

ExitStatus listMbdb(const fs::path& path, const Arguments& given, Console& console) {
    const auto file = MappedFile::open(path);
    Listing listing(console, given.has("--json"));
    std::size_t records = 0;
    const auto end = ParseMbdb::visit(file ? file->bytes() : Bytes(), [&](MDFileInfo&& record) {
        ++records;
        listing.add(listed(record));
    });
    const auto fault = [&path](const std::string& cause) {
        return Failure(ExitStatus::SourceUnusable, path.string() + ": " + cause);
    };
    if (!file) throw fault("cannot be mapped into memory");
    if (end == ParseMbdb::End::NoIndex)
        throw fault("is no index file (it does not begin with \"mbdb\")");
    listing.finish();
    if (end == ParseMbdb::End::CutShort)
        throw fault(fmt::format("is cut off behind record {}", records));
    return ExitStatus::Done;
}

class IndexCommand : public Command {
  public:
    const CommandTable& table() const override {
        static const CommandTable kTable{
            "index",
            "Lists every file that a backup's index names.",
            {{"FILE-OR-BACKUP",
              "an index file (Manifest.mbdb, or Manifest.db in its backup) or a backup folder"}},
            {{"--json", nullptr, "print one JSON object a line"}, kPasswordOption}};
        return kTable;
    }

    ExitStatus execute(const Arguments& given, Console& console) const override {
        const fs::path named = given["FILE-OR-BACKUP"];
        if (const auto backup = databaseBackup(named)) return listDatabase(*backup, given, console);
        const auto index = require(findIndexFile(named));
        // What the older index lists is readable; a password is tried all the same.
        if (given.has(kPasswordOption.name) && index.has_parent_path())
            keysFor(index.parent_path(), given, console, Ask::No);
        return listMbdb(index, given, console);
    }
};

}  // namespace

std::unique_ptr<Command> makeIndexCommand() {
    return std::make_unique<IndexCommand>();
}

}  // namespace salvor::cli
