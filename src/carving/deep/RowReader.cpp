#include "carving/deep/RowReader.h"

#include <algorithm>

#include "carving/format/BigEndian.h"
#include "carving/format/OverflowChain.h"

namespace salvor::deep {
namespace {

// Chains are as long as a hostile file wants them; all rows together may read each page so often.
constexpr std::uint64_t kReadsOfAPage = 16;

bool isFree(PageUse use) {
    return use == PageUse::FreeLeaf || use == PageUse::None;
}

}  // namespace

RowReader::RowReader(const Survey& survey)
    : survey_(survey),
      pagesLeft_(kReadsOfAPage * (std::uint64_t{survey.store().pageCount()} + 1000)) {}

Bytes RowReader::pageAt(const PageImage& time, std::uint32_t page) {
    if (pagesLeft_ == 0) return {};
    --pagesLeft_;
    const PageStore& store = survey_.store();
    if (time.file == ImageFile::Wal && !time.current)
        return store.bytes(store.asOfFrame(page, time.frame));
    if (time.file == ImageFile::Journal) return store.bytes(store.beforeJournal(page));
    if (!time.current) return store.bytes(store.inFile(page));
    if (isFree(survey_.uses().of(page).use)) return store.currentBytes(page);
    // What took the page stands in the log; the file has it as it was.
    const PageImage now = store.current(page);
    return now.file == ImageFile::Wal ? store.bytes(store.inFile(page)) : Bytes();
}

const Record& RowReader::read(const PageImage& time, Bytes page, const Candidate& candidate) {
    chain_.clear();
    chainComplete_ = true;
    record_.body = 0;
    if (!candidate.types(page, record_.types)) record_.types.clear();
    const std::uint32_t stands =
        std::min(candidate.standsTo, candidate.bodyAt + candidate.bodyOnPage());
    record_.payload =
        slice(page, candidate.bodyAt, stands > candidate.bodyAt ? stands - candidate.bodyAt : 0);
    const std::uint32_t overflowAt = candidate.overflowAt();
    if (overflowAt == 0) return record_;
    chainComplete_ = !candidate.isCut();
    if (!chainComplete_) return record_;
    buffer_.assign(record_.payload.begin(), record_.payload.end());
    chainComplete_ = followOverflow(
        bigEndian32(page, overflowAt), candidate.payload - candidate.local,
        survey_.store().layout().usable, [&](std::uint32_t number) { return pageAt(time, number); },
        [&](std::uint32_t number, Bytes part) {
            chain_.push_back(number);
            buffer_.insert(buffer_.end(), part.begin(), part.end());
        });
    record_.payload = buffer_;
    return record_;
}

}  // namespace salvor::deep
