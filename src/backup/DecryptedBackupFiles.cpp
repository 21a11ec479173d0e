#include "backup/DecryptedBackupFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "util/ReadableFile.h"

namespace salvor {
namespace {

/// So many copies stay for the next one who opens them: a scan opens each database several times.
constexpr std::size_t kRecent = 24;

/// The files that the index lists, by stored name.
class DecryptedFileList : public StoredFileList {
  public:
    explicit DecryptedFileList(const DecryptedBackupFiles& files) : files_(files) {
        const BackupIndex& index = *files.index();
        for (std::size_t i = 0; i < index.size(); ++i) {
            auto entry = index.entry(i);
            if (entry.kind == EntryKind::File && !entry.storedName.view().empty())
                names_.push_back(std::move(entry.storedName));
        }
        std::sort(names_.begin(), names_.end());
        names_.erase(std::unique(names_.begin(), names_.end()), names_.end());
    }

    std::size_t size() const override { return names_.size(); }
    std::filesystem::path place(std::size_t number) const override {
        return files_.locate(name(number)).facts.place;
    }
    std::uint64_t fileSize(std::size_t number) const override {
        return files_.find(name(number)).size;
    }
    FileHead readHead(std::size_t number, std::span<std::uint8_t> head) const override {
        const auto file = files_.locate(name(number));
        // What is listed and was not backed up is told elsewhere.
        if (file.facts.state == FileState::Absent) return {};
        if (file.facts.state == FileState::Locked) return {0, "its key is not to be had"};
        if (!file.facts) return {0, "cannot be read"};
        if (!file.plain) return {file.cipher().readHead(head), ""};
        const auto opened = ReadableFile::open(file.facts.place);
        const auto size = opened ? opened->readHead(head) : std::nullopt;
        return {size.value_or(0), size ? "" : "cannot be read"};
    }
    FileCopy copyTo(std::size_t number, const std::filesystem::path& target,
                    const FileCopyOptions& options) const override {
        return files_.copyTo(name(number), target, options);
    }
    bool sharesBlocks(std::size_t, const std::filesystem::path&) const override { return false; }

  private:
    std::string name(std::size_t number) const { return std::string(*names_.at(number)); }

    const DecryptedBackupFiles& files_;
    std::vector<Text> names_;
};

}  // namespace

/// A decrypted file; it goes with the object, and its folder with the last of them.
struct DecryptedBackupFiles::Copy {
    Copy(std::filesystem::path copied, std::shared_ptr<PrivateStore> place)
        : path(std::move(copied)), store(std::move(place)) {}
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        std::error_code ignored;
        std::filesystem::remove_all(path.parent_path(), ignored);
    }

    std::filesystem::path path;
    std::shared_ptr<PrivateStore> store;
};

DecryptedBackupFiles::DecryptedBackupFiles(const std::filesystem::path& folder,
                                           std::shared_ptr<const BackupIndex> index,
                                           std::shared_ptr<const BackupKeys> keys,
                                           std::shared_ptr<PrivateStore> store)
    : folder_(folder), index_(std::move(index)), keys_(std::move(keys)), store_(std::move(store)) {}

EncryptedFile DecryptedBackupFiles::locate(const std::string& storedName) const {
    EncryptedFile file;
    file.facts = folder_.find(storedName);
    if (!file.facts) return file;
    const auto number = index_->find(storedName);
    const auto details = number ? index_->details(*number) : EntryDetails();
    // What a damaged index lost may have had a key.
    file.plain = details.key.empty() && (number || index_->damage().empty());
    if (file.plain) return file;
    file.key = keys_->open(
        {reinterpret_cast<const std::uint8_t*>(details.key.data()), details.key.size()});
    if (!file.key) {
        file.facts.state = FileState::Locked;
        return file;
    }
    file.content = MappedFile::open(file.facts.place);
    const auto size = file.content ? file.cipher().size() : std::nullopt;
    if (!size) file.facts.state = FileState::Unreadable;
    file.facts.size = size.value_or(0);
    return file;
}

FileFacts DecryptedBackupFiles::find(const std::string& storedName) const {
    return locate(storedName).facts;
}

std::shared_ptr<DecryptedBackupFiles::Slot> DecryptedBackupFiles::slotOf(
    const std::string& storedName) const {
    const std::lock_guard lock(mutex_);
    auto& slot = slots_[storedName];
    if (slot == nullptr) slot = std::make_shared<Slot>();
    return slot;
}

void DecryptedBackupFiles::keepAWhile(std::shared_ptr<const Copy> copy) const {
    std::shared_ptr<const Copy> oldest;  // goes without the lock
    const std::lock_guard lock(mutex_);
    recent_.remove(copy);
    recent_.push_front(std::move(copy));
    if (recent_.size() <= kRecent) return;
    oldest = std::move(recent_.back());
    recent_.pop_back();
}

BackupFile DecryptedBackupFiles::open(const std::string& storedName) const {
    const auto slot = slotOf(storedName);
    const std::lock_guard lock(slot->mutex);
    if (auto copy = slot->copy.lock()) {
        keepAWhile(copy);
        return {FileState::Present, copy->path, copy};
    }
    const auto file = locate(storedName);
    if (file.plain) return folder_.open(storedName);
    if (!file.facts) return {file.facts.state, file.facts.place, nullptr};
    const auto place = store_->placeFor(storedName, file.facts.size);
    if (place.empty() || !file.cipher().decryptTo(place))
        return {FileState::Unreadable, file.facts.place, nullptr};
    auto copy = std::make_shared<const Copy>(place, store_);
    slot->copy = copy;
    keepAWhile(copy);
    return {FileState::Present, place, std::move(copy)};
}

FileCopy DecryptedBackupFiles::copyTo(const std::string& storedName,
                                      const std::filesystem::path& target,
                                      const FileCopyOptions& options) const {
    const auto file = locate(storedName);
    if (file.plain) return folder_.copyTo(storedName, target, options);
    if (!file.facts) return {FileCopy::End::Unreadable, "cannot be read"};
    FileCopyOptions dated = options;
    if (!dated.modified) dated.modified = file.facts.modified;
    return file.cipher().decryptTo(target, dated);
}

std::optional<std::int64_t> DecryptedBackupFiles::indexedDate(const std::string& storedName) const {
    const auto number = index_->find(storedName);
    return number ? std::optional(index_->details(*number).modified) : std::nullopt;
}

std::unique_ptr<StoredFileList> DecryptedBackupFiles::list() const {
    return std::make_unique<DecryptedFileList>(*this);
}

std::string DecryptedBackupFiles::nameFor(const std::string& domain,
                                          const std::string& path) const {
    const auto found = index_->find(domain, path);
    return found ? index_->entry(*found).storedName.value_or("")
                 : BackupFiles::nameFor(domain, path);
}

}  // namespace salvor
