#include "backup/BackupLock.h"

#include <utility>

#include "backup/ManifestFile.h"
#include "backup/MbdbIndex.h"
#include "util/PropertyList.h"

namespace salvor {
namespace {

/// An index that could not be read.
class NoIndex : public BackupIndex {
  public:
    explicit NoIndex(std::string fault) : fault_(std::move(fault)) {}

    std::size_t size() const override { return 0; }
    IndexEntry entry(std::size_t) const override { return {}; }
    EntryDetails details(std::size_t) const override { return {}; }
    std::optional<std::size_t> find(const std::string&) const override { return std::nullopt; }
    std::optional<std::size_t> find(const std::string&, const std::string&) const override {
        return std::nullopt;
    }
    const std::string& damage() const override { return fault_; }

  private:
    std::string fault_;
};

}  // namespace

BackupLock lockOf(const BackupFiles& files) {
    BackupLock lock;
    const auto file = files.own("Manifest.plist");
    const auto manifest = file ? PropertyList::read(file.path) : PropertyList();
    lock.encrypted = manifest.boolean("IsEncrypted").value_or(false);
    lock.manifestKey = manifest.data("ManifestKey").value_or("");
    const auto bag = manifest.data("BackupKeyBag").value_or("");
    lock.bag = KeyBag::parse({reinterpret_cast<const std::uint8_t*>(bag.data()), bag.size()});
    return lock;
}

std::shared_ptr<const BackupIndex> readIndex(const std::filesystem::path& folder,
                                             const BackupFiles& files, const BackupKeys* keys,
                                             std::shared_ptr<PrivateStore> store) {
    std::string fault;
    std::shared_ptr<const BackupIndex> index;
    const auto older = files.own("Manifest.mbdb");
    if (older.state != FileState::Absent) {
        index = MbdbIndex::open(older.path, fault);
    } else if (files.own("Manifest.db").state != FileState::Absent) {
        const BackupLock lock = lockOf(files);
        if (store == nullptr) store = std::make_shared<PrivateStore>(folder);
        index = openManifest(files, keys, lock.manifestKey, std::move(store), fault);
        if (index == nullptr && lock.encrypted && keys == nullptr) fault = "it is encrypted";
    } else {
        fault = "there is none";
    }
    return index != nullptr ? index : std::make_shared<const NoIndex>(std::move(fault));
}

bool hidesMetadata(const BackupIndex& index) {
    const auto* database = dynamic_cast<const ManifestDatabase*>(&index);
    return database != nullptr && database->hidesMetadata();
}

}  // namespace salvor
