#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "carving/format/DatabaseLayout.h"
#include "carving/format/JournalFile.h"
#include "carving/format/WalFile.h"
#include "util/Bytes.h"

namespace salvor {

enum class ImageFile : std::uint8_t { Main, Wal, Journal };

/// One state of one page: where its bytes stand and whether a reader of the database sees it.
struct PageImage {
    std::uint64_t offset = 0;  ///< of its bytes in the file
    std::uint32_t page = 0;    ///< from 1
    std::uint32_t frame = 0;   ///< of the log, from 1; 0 elsewhere
    ImageFile file = ImageFile::Main;
    bool current = false;
};

/// Every state of every page of a database: the file, its write-ahead log, its rollback journal.
/// A view over mapped files, which have to outlive it; nothing is copied.
class PageStore {
  public:
    struct Files {
        Bytes main;
        Bytes wal;
        Bytes journal;
    };

    /// Nothing when neither the file nor the log begins a database.
    static std::optional<PageStore> open(const Files& files);

    const DatabaseLayout& layout() const { return layout_; }
    const WalFile& wal() const { return wal_; }
    const JournalFile& journal() const { return journal_; }
    /// Pages of the database as a reader sees it.
    std::uint32_t pageCount() const { return pageCount_; }
    /// Pages of the file, a last one that is cut included.
    std::uint32_t pagesInFile() const;

    /// What a reader sees as `page`; an empty view's image when there is no such page.
    PageImage current(std::uint32_t page) const;
    /// The newest version of `page` at or before `frame` of the log.
    PageImage asOfFrame(std::uint32_t page, std::uint32_t frame) const;
    /// As the journal's transaction found it.
    PageImage beforeJournal(std::uint32_t page) const;
    /// The page of the main file, superseded or not.
    PageImage inFile(std::uint32_t page) const;

    /// The bytes of an image; shorter than a page where the file is cut.
    Bytes bytes(const PageImage& image) const;
    Bytes currentBytes(std::uint32_t page) const { return bytes(current(page)); }

    /// Every image a reader sees, then those behind the last page, then all older ones.
    std::vector<PageImage> images() const;

  private:
    Files files_;
    DatabaseLayout layout_;
    WalFile wal_;
    JournalFile journal_;
    std::uint32_t pageCount_ = 0;
    std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> frames_;  ///< of a page, rising
    std::unordered_map<std::uint32_t, std::uint32_t> journalled_;  ///< page to its place in pages
};

}  // namespace salvor
