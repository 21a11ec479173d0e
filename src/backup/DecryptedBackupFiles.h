#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "backup/FolderBackupFiles.h"
#include "backup/PrivateStore.h"
#include "backup/keys/BackupKeys.h"
#include "backup/keys/FileCipher.h"
#include "scan/BackupIndex.h"
#include "util/MappedFile.h"

namespace salvor {

/// A stored file of an encrypted backup, as far as it can be had.
struct EncryptedFile {
    FileFacts facts;     ///< of the stored file; `Locked` when its key is not to be had
    bool plain = false;  ///< the index has no key for it: it lies readable
    std::optional<Secret> key;
    std::optional<MappedFile> content;

    FileCipher cipher() const { return {content->bytes(), key->bytes()}; }
};

/// The files of an encrypted backup of any generation, through its opened keys. A file to be opened
/// is decrypted into a private copy, which lives as long as somebody holds it and, while few others
/// were opened since, a little longer. Sizes are those of what is encrypted.
class DecryptedBackupFiles : public BackupFiles {
  public:
    DecryptedBackupFiles(const std::filesystem::path& folder,
                         std::shared_ptr<const BackupIndex> index,
                         std::shared_ptr<const BackupKeys> keys,
                         std::shared_ptr<PrivateStore> store);

    FileFacts find(const std::string& storedName) const override;
    BackupFile open(const std::string& storedName) const override;
    BackupFile own(const std::string& name) const override { return folder_.own(name); }
    std::unique_ptr<StoredFileList> list() const override;
    std::optional<std::string> storedNameAt(const std::filesystem::path& place) const override {
        return folder_.storedNameAt(place);
    }
    std::uint64_t totalBytes() const override { return folder_.totalBytes(); }
    std::string nameFor(const std::string& domain, const std::string& path) const override;
    const BackupIndex* index() const override { return index_.get(); }
    FileCopy copyTo(const std::string& storedName, const std::filesystem::path& target,
                    const FileCopyOptions& options) const override;
    std::optional<std::int64_t> indexedDate(const std::string& storedName) const override;

    EncryptedFile locate(const std::string& storedName) const;

  private:
    struct Copy;
    /// The place of one file's copy; its lock keeps two threads from decrypting it twice.
    struct Slot {
        std::mutex mutex;
        std::weak_ptr<const Copy> copy;
    };
    std::shared_ptr<Slot> slotOf(const std::string& storedName) const;
    void keepAWhile(std::shared_ptr<const Copy> copy) const;

    FolderBackupFiles folder_;
    std::shared_ptr<const BackupIndex> index_;
    std::shared_ptr<const BackupKeys> keys_;
    std::shared_ptr<PrivateStore> store_;
    mutable std::mutex mutex_;  ///< of what follows
    mutable std::map<std::string, std::shared_ptr<Slot>> slots_;
    mutable std::list<std::shared_ptr<const Copy>> recent_;
};

}  // namespace salvor
