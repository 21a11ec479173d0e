#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include "scan/BackupIndex.h"
#include "sql/FMDBUtils.h"
#include "util/TextMap.h"

namespace salvor {

/// The index of a backup of iOS 10 and later, Manifest.db: the table "Files" with stored name,
/// domain, path, kind (1 file, 2 folder, 4 link) and metadata of each entry. Names are read once,
/// metadata when it is asked for. A damaged database gives what could be read until then.
class ManifestDatabase : public BackupIndex {
  public:
    /// Reads the readable database at `path`, whose log has been merged. `hold` is kept as long as
    /// the object: a private copy. Null when it is no such index, and `fault` says why.
    static std::shared_ptr<const ManifestDatabase> open(const std::filesystem::path& path,
                                                        std::shared_ptr<const void> hold,
                                                        std::string& fault);

    std::size_t size() const override { return rows_.size(); }
    IndexEntry entry(std::size_t number) const override;
    EntryDetails details(std::size_t number) const override;
    std::optional<std::size_t> find(const std::string& storedName) const override;
    std::optional<std::size_t> find(const std::string& domain,
                                    const std::string& path) const override;
    const std::string& damage() const override { return damage_; }

    /// The entries of files are there and none of the first has metadata that can be read: so the
    /// encrypted backups of iOS 10.0 were.
    bool hidesMetadata() const;

  private:
    struct Row {
        std::int64_t rowId = 0;
        IndexEntry entry;
    };
    ManifestDatabase(std::unique_ptr<FMDBUtils> database, std::shared_ptr<const void> hold);
    void readNames(FMDBUtils& names, std::uint64_t fileSize, std::string& fault);
    void add(Row row);
    std::optional<EntryDetails> read(std::size_t number) const;

    std::shared_ptr<const void> hold_;
    mutable std::mutex mutex_;  ///< of the database
    std::unique_ptr<FMDBUtils> database_;
    std::vector<Row> rows_;
    TextMap<std::uint32_t> byName_;
    TextMap<std::uint32_t> byPlace_;  ///< of rows whose stored name does not follow from the place
    std::string damage_;
};

}  // namespace salvor
