#include "carving/format/PageStore.h"

#include <algorithm>

namespace salvor {
namespace {

constexpr std::uint32_t kMaxPages = 0xFFFFFFFE;

/// Page 1 of the log's last committed state, or of its last frame at all.
Bytes headerInLog(Bytes file, const WalFile& log) {
    const std::size_t last = log.committed != 0 ? log.committed : log.frames.size();
    for (std::size_t i = last; i-- > 0;)
        if (log.frames[i].page == 1) return slice(file, log.frames[i].offset, log.pageSize);
    return {};
}

}  // namespace

std::optional<PageStore> PageStore::open(const Files& files) {
    PageStore store;
    store.files_ = files;
    auto layout = DatabaseLayout::read(files.main);
    auto log = WalFile::read(files.wal, layout ? layout->pageSize : 0);
    if (log && (!layout || log->committed != 0))
        if (const auto newer = DatabaseLayout::read(headerInLog(files.wal, *log)))
            if (newer->pageSize == log->pageSize) layout = newer;
    if (!layout) return std::nullopt;
    store.layout_ = *layout;
    if (log) store.wal_ = *std::move(log);
    store.journal_ = JournalFile::read(files.journal, layout->pageSize);

    for (std::uint32_t i = 0; i < store.wal_.frames.size(); ++i)
        store.frames_[store.wal_.frames[i].page].push_back(i);
    for (std::uint32_t i = 0; i < store.journal_.pages.size(); ++i)
        store.journalled_.emplace(store.journal_.pages[i].page, i);

    const std::uint32_t stored = store.pagesInFile();
    store.pageCount_ = layout->pagesInHeader != 0 ? layout->pagesInHeader : stored;
    // A count that nothing bears out, as of a file that was cut, ends with what there is.
    std::uint32_t most = stored;
    if (store.wal_.committed != 0) {
        store.pageCount_ = store.wal_.frames[store.wal_.committed - 1].commitSize;
        for (std::size_t i = 0; i < store.wal_.committed; ++i)
            most = std::max(most, store.wal_.frames[i].page);
    }
    store.pageCount_ = std::min({store.pageCount_, most, kMaxPages});
    return store;
}

std::uint32_t PageStore::pagesInFile() const {
    const std::uint64_t pages = (files_.main.size() + layout_.pageSize - 1) / layout_.pageSize;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(pages, kMaxPages));
}

PageImage PageStore::inFile(std::uint32_t page) const {
    PageImage image;
    if (page == 0 || page > pagesInFile()) return image;
    image.page = page;
    image.offset = std::uint64_t{page - 1} * layout_.pageSize;
    return image;
}

PageImage PageStore::asOfFrame(std::uint32_t page, std::uint32_t frame) const {
    const auto found = frames_.find(page);
    if (found != frames_.end()) {
        const auto& numbers = found->second;
        const auto behind = std::lower_bound(numbers.begin(), numbers.end(), frame);
        if (behind != numbers.begin()) {
            const std::uint32_t index = *std::prev(behind);
            return {wal_.frames[index].offset, page, index + 1, ImageFile::Wal, false};
        }
    }
    return inFile(page);
}

PageImage PageStore::current(std::uint32_t page) const {
    if (page == 0 || page > pageCount_) return {};
    PageImage image = asOfFrame(page, static_cast<std::uint32_t>(wal_.committed));
    image.current = image.page != 0;
    return image;
}

PageImage PageStore::beforeJournal(std::uint32_t page) const {
    const auto found = journalled_.find(page);
    if (found == journalled_.end()) return current(page);
    return {journal_.pages[found->second].offset, page, 0, ImageFile::Journal, false};
}

Bytes PageStore::bytes(const PageImage& image) const {
    if (image.page == 0) return {};
    const Bytes file = image.file == ImageFile::Main  ? files_.main
                       : image.file == ImageFile::Wal ? files_.wal
                                                      : files_.journal;
    return slice(file, static_cast<std::size_t>(image.offset), layout_.pageSize);
}

std::vector<PageImage> PageStore::images() const {
    std::vector<PageImage> all;
    const std::uint32_t stored = pagesInFile();
    all.reserve(std::size_t{stored} + wal_.frames.size() + journal_.pages.size());
    for (std::uint32_t page = 1; page <= pageCount_; ++page)
        if (const PageImage image = current(page); image.page != 0) all.push_back(image);
    for (std::uint32_t page = pageCount_ + 1; page <= stored && page != 0; ++page)
        all.push_back(inFile(page));
    for (std::uint32_t page = 1; page <= std::min(stored, pageCount_); ++page)
        if (current(page).file == ImageFile::Wal) all.push_back(inFile(page));
    for (std::uint32_t i = 0; i < wal_.frames.size(); ++i) {
        const WalFrame& frame = wal_.frames[i];
        const PageImage seen = current(frame.page);
        if (frame.page != 0 && seen.frame != i + 1)
            all.push_back({frame.offset, frame.page, i + 1, ImageFile::Wal, false});
    }
    for (const JournalPage& page : journal_.pages)
        all.push_back({page.offset, page.page, 0, ImageFile::Journal, false});
    return all;
}

}  // namespace salvor
