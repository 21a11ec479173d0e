#include "backup/manifest/ManifestDatabase.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <system_error>
#include <utility>

#include "backup/manifest/FileRecord.h"
#include "util/Sha1.h"

namespace salvor {
namespace {

constexpr std::uint32_t kTypeMask = 0170000;

/// A row takes more bytes than this: its stored name alone has 40.
constexpr std::uint64_t kLeastRowBytes = 40;

EntryKind kindOf(std::int64_t flags) {
    switch (flags) {
        case 1:
            return EntryKind::File;
        case 2:
            return EntryKind::Folder;
        case 4:
            return EntryKind::Link;
        default:
            return EntryKind::Other;
    }
}

std::string placeOf(const std::string& domain, const std::string& path) {
    return domain + "-" + path;
}

/// Keeps the first failure of the statements.
class Watch : public DatabaseWatch {
  public:
    explicit Watch(std::string& damage) : damage_(damage) {}
    void readingEnded(const ReadingEnd& end) override {
        if (end.kind != ReadingEnd::Kind::Whole && damage_.empty()) damage_ = end.reason;
    }

  private:
    std::string& damage_;
};

}  // namespace

std::shared_ptr<const ManifestDatabase> ManifestDatabase::open(const std::filesystem::path& path,
                                                               std::shared_ptr<const void> hold,
                                                               std::string& fault) {
    std::error_code failed;
    const auto size = std::filesystem::file_size(path, failed);
    // What fails while names are read is told; metadata that cannot be read is absent.
    FMDBUtils names(path.string(), SourcePolicy::Protected, {}, std::make_shared<Watch>(fault));
    const std::shared_ptr<ManifestDatabase> index(new ManifestDatabase(
        std::make_unique<FMDBUtils>(path.string(), SourcePolicy::Protected), std::move(hold)));
    if (failed || !names.openDatabase() || !index->database_->openDatabase()) return nullptr;
    index->readNames(names, size, fault);
    if (index->rows_.empty() && !fault.empty()) return nullptr;
    index->damage_ = std::exchange(fault, {});
    return index;
}

void ManifestDatabase::readNames(FMDBUtils& names, std::uint64_t fileSize, std::string& fault) {
    auto rows = names.executeList({"SELECT rowid, fileID, domain, relativePath, flags FROM Files"});
    std::uint64_t texts = 0;
    while (rows.next()) {
        Row row{rows.longForColumn("rowid"),
                {rows.stringForColumn("domain"), rows.stringForColumn("relativePath"),
                 rows.stringForColumn("fileID"), kindOf(rows.longForColumn("flags"))}};
        texts += row.entry.domain.view().size() + row.entry.path.view().size();
        if (rows_.size() >= fileSize / kLeastRowBytes || texts > 2 * fileSize) {
            fault = "it lists more files than its size allows";
            return;
        }
        add(std::move(row));
    }
}

ManifestDatabase::ManifestDatabase(std::unique_ptr<FMDBUtils> database,
                                   std::shared_ptr<const void> hold)
    : hold_(std::move(hold)), database_(std::move(database)) {}

void ManifestDatabase::add(Row row) {
    auto& [domain, path, storedName, kind] = row.entry;
    if (!domain) domain = "";
    if (!path) path = "";
    if (!storedName) return;
    const auto number = static_cast<std::uint32_t>(rows_.size());
    const auto place = placeOf(std::string(*domain), std::string(*path));
    byName_.tryEmplace(storedName, number);
    if (Sha1::hexDigest(place) != *storedName) byPlace_.tryEmplace(place, number);
    rows_.push_back(std::move(row));
}

IndexEntry ManifestDatabase::entry(std::size_t number) const {
    return rows_.at(number).entry;
}

EntryDetails ManifestDatabase::details(std::size_t number) const {
    auto details = read(number).value_or(EntryDetails());
    if ((details.mode & kTypeMask) != 0) return details;
    // The kind is told by the row itself, too.
    constexpr std::array<std::uint32_t, 4> kTypes{0100000, 0040000, 0120000, 0};
    details.mode |= kTypes.at(static_cast<std::size_t>(rows_.at(number).entry.kind));
    return details;
}

std::optional<EntryDetails> ManifestDatabase::read(std::size_t number) const {
    const std::lock_guard lock(mutex_);
    auto row = database_->executeQuery("SELECT file FROM Files WHERE rowid = ?",
                                       {ColumnValue(rows_.at(number).rowId)});
    if (!row.next()) return std::nullopt;
    const Text blob = row.dataForColumn("file");
    const auto bytes = blob.view();
    return readFileRecord({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::optional<std::size_t> ManifestDatabase::find(const std::string& storedName) const {
    const auto* number = byName_.find(storedName);
    return number != nullptr ? std::optional<std::size_t>(*number) : std::nullopt;
}

std::optional<std::size_t> ManifestDatabase::find(const std::string& domain,
                                                  const std::string& path) const {
    const std::string place = placeOf(domain, path);
    const auto isIt = [&](std::size_t number) {
        const IndexEntry& entry = rows_[number].entry;
        return entry.domain == domain && entry.path == path;
    };
    const auto byName = find(Sha1::hexDigest(place));
    if (byName && isIt(*byName)) return byName;
    const auto* odd = byPlace_.find(place);
    return odd != nullptr && isIt(*odd) ? std::optional<std::size_t>(*odd) : std::nullopt;
}

bool ManifestDatabase::hidesMetadata() const {
    constexpr std::size_t kLooked = 50;
    std::size_t files = 0;
    for (std::size_t i = 0; i < rows_.size() && files < kLooked; ++i) {
        if (rows_[i].entry.kind != EntryKind::File) continue;
        if (read(i)) return false;
        ++files;
    }
    return files > 0;
}

}  // namespace salvor
