#include "app/RecoverFile.h"

#include <fmt/format.h>

#include "carving/format/PageStore.h"
#include "util/MappedFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

/// Maps a file that was named, or the one of the usual name when there is one.
std::optional<MappedFile> beside(const fs::path& database, const std::optional<fs::path>& named,
                                 const char* ending, std::string& fault) {
    const fs::path path = named ? *named : fs::path(database.string() + ending);
    std::error_code ignored;
    if (!named && !fs::is_regular_file(path, ignored)) return std::nullopt;
    auto file = MappedFile::open(path);
    if (!file) fault = path.string() + ": cannot be read";
    return file;
}

Bytes bytesOf(const std::optional<MappedFile>& file) {
    return file ? file->bytes() : Bytes();
}

void addWarnings(const RecoverySource& source, const PageStore& store, bool logGiven,
                 RecoveryOutcome& outcome) {
    const std::string name = source.database.string();
    if (outcome.facts.cut)
        outcome.warnings.push_back(fmt::format("{}: shorter than its header says ({} of {} pages)",
                                               name, store.pageCount(),
                                               store.layout().pagesInHeader));
    if (logGiven && store.wal().frames.empty())
        outcome.warnings.push_back(name + ": the log holds no frame of this database");
    if (outcome.facts.tables.size() <= 1)
        outcome.warnings.push_back(name + ": no table can be read from its schema");
}

}  // namespace

const char* fileName(ImageFile file) {
    return file == ImageFile::Main ? "main" : file == ImageFile::Wal ? "wal" : "journal";
}

RecoveryOutcome recoverFile(const RecoverySource& source, const deep::RecoveryOptions& options,
                            const deep::RowSink& sink, std::stop_token stop) {
    RecoveryOutcome outcome;
    const auto main = MappedFile::open(source.database);
    if (!main) outcome.fault = source.database.string() + ": cannot be read";
    const auto log = beside(source.database, source.log, "-wal", outcome.fault);
    const auto journal = beside(source.database, source.journal, "-journal", outcome.fault);
    if (!outcome.fault.empty()) return outcome;
    const auto store = PageStore::open({main->bytes(), bytesOf(log), bytesOf(journal)});
    if (!store) {
        outcome.fault = source.database.string() + ": no SQLite database";
        return outcome;
    }
    outcome.facts = deep::recoverRows(*store, options, sink, std::move(stop));
    addWarnings(source, *store, log && !log->bytes().empty(), outcome);
    return outcome;
}

}  // namespace salvor
