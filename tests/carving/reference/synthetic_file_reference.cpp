#include <algorithm>
#include <array>

#include "file_generator.h"
#include "record_planter.h"

namespace salvor::reference {
namespace {

constexpr std::int64_t kTreeHeader = 8;

class SyntheticFile {
  public:
    SyntheticFile(RandomSource& random, const std::vector<PlannedPattern>& patterns)
        : random_(random), planter_(random, patterns), staged_(patterns[0].staged) {}

    Buffer make();

  private:
    Buffer treePage();
    Buffer pointerMapPage();
    void placeFreeblocks(Buffer& page, std::int64_t from);
    std::int64_t freeblockSize(std::int64_t room);
    void writeHeader(Buffer& file);
    std::int64_t pageNumber(std::int64_t least, std::int64_t most);

    RandomSource& random_;
    RecordPlanter planter_;
    Staged staged_;
    std::int64_t pageSize_ = 0;
    std::int64_t pages_ = 0;
    bool autoVacuum_ = false;
};

std::int64_t SyntheticFile::freeblockSize(std::int64_t room) {
    if (staged_ == Staged::MoveBack && random_.chance(60))
        return std::min(room, random_.between(16, 34));
    switch (random_.below(12)) {
        case 0:
            return random_.below(2);
        case 1:
            return random_.between(2, 17);
        case 2:
            return room + random_.between(1, 4);
        case 3:
            return random_.below(65536);
        case 4:
            return room;
        default:
            return std::min(room, random_.between(16, std::max<std::int64_t>(room, 16)));
    }
}

void SyntheticFile::placeFreeblocks(Buffer& page, std::int64_t from) {
    std::int64_t link = 1;
    std::vector<std::int64_t> placed;
    std::int64_t at = from;
    for (auto count = random_.below(5); count > 0 && at + 4 < pageSize_; --count) {
        const auto room = std::max<std::int64_t>((pageSize_ - at) / count, 4);
        const auto size = freeblockSize(room);
        const auto inside = std::min(size, pageSize_ - at);
        const Buffer content = planter_.fill(std::max<std::int64_t>(inside, 3), true);
        std::copy_n(content.begin(), inside, page.begin() + at);
        store(page, link, 2, static_cast<std::uint64_t>(at));
        store(page, at, 2, 0);
        store(page, at + 2, 2, static_cast<std::uint64_t>(size));
        placed.push_back(at);
        link = at;
        at += std::max<std::int64_t>(inside, 4);
    }
    if (placed.empty()) return;
    if (random_.chance(15)) store(page, link, 2, static_cast<std::uint64_t>(random_.pick(placed)));
    if (random_.chance(15))
        store(page, link, 2, static_cast<std::uint64_t>(pageSize_ + random_.below(3)));
}

Buffer SyntheticFile::treePage() {
    constexpr std::array<std::uint8_t, 5> kTypes{5, 10, 13, 13, 13};
    Buffer page = planter_.fill(pageSize_, false);
    page[0] = random_.chance(88) ? random_.pick(kTypes) : random_.byte();
    const auto room = std::max<std::int64_t>(pageSize_ / 2 - 9, 1);
    const auto cells =
        random_.chance(90) ? random_.below(std::min<std::int64_t>(room, 20)) : random_.below(65536);
    const auto start = (cells + kTreeHeader) * 2;
    auto content = start + random_.below(std::max<std::int64_t>(pageSize_ - start, 1) + 1);
    if (random_.chance(20)) content = pageSize_;
    if (random_.chance(4)) content = 0;
    if (random_.chance(4)) content = start - random_.below(2);
    if (random_.chance(4)) content = pageSize_ + random_.below(20);
    store(page, 1, 2, 0);
    store(page, 3, 2, static_cast<std::uint64_t>(cells));
    store(page, 5, 2, static_cast<std::uint64_t>(content));
    if (content > start && content < pageSize_) {
        const Buffer gap = planter_.fill(content - start, false);
        std::copy(gap.begin(), gap.end(), page.begin() + start);
        placeFreeblocks(page, content);
    }
    if ((content == pageSize_ || content == start) && random_.chance(50))
        placeFreeblocks(page, start);
    return page;
}

/// Entries of valid types to the end, or up to one that is none.
Buffer SyntheticFile::pointerMapPage() {
    Buffer page = planter_.fill(pageSize_, false);
    const auto valid = random_.chance(75) ? pageSize_ : random_.below(pageSize_);
    for (std::int64_t at = 0; at < valid; at += 5)
        page[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(random_.between(1, 5));
    return page;
}

std::int64_t SyntheticFile::pageNumber(std::int64_t least, std::int64_t most) {
    if (random_.chance(88)) return random_.between(least, most);
    if (random_.chance(50)) return random_.between(0, 1000);
    return static_cast<std::int64_t>(random_.bits() >> 32);
}

void SyntheticFile::writeHeader(Buffer& file) {
    const auto count = random_.chance(80) ? pages_ : pageNumber(0, pages_ + 3);
    // From page 1 on the free-list pass just misses a short block at the end.
    const auto trunk = random_.chance(40) ? 0 : random_.chance(20) ? 1 : pageNumber(1, pages_ + 2);
    const auto root = autoVacuum_ ? pageNumber(1, pages_ + 1) : 0;
    store(file, 16, 2, static_cast<std::uint64_t>(pageSize_));
    store(file, 28, 4, static_cast<std::uint64_t>(count));
    store(file, 32, 4, static_cast<std::uint64_t>(trunk));
    store(file, 52, 4, static_cast<std::uint64_t>(root));
}

Buffer SyntheticFile::make() {
    constexpr std::array<std::int64_t, 5> kPageSizes{512, 512, 1024, 2048, 4096};
    pageSize_ = random_.chance(55) ? random_.pick(kPageSizes) : random_.between(16, 400);
    pages_ = std::clamp<std::int64_t>(12000 / pageSize_, 3, random_.between(3, 30));
    autoVacuum_ = random_.chance(40);
    if (autoVacuum_ && random_.chance(50)) {
        // Pointer-map pages of few entries: the second one lies within a small file.
        pageSize_ = random_.between(30, 120);
        pages_ = pageSize_ / 5 + random_.between(3, 12);
    }
    if (staged_ != Staged::Nothing) {
        pageSize_ = 512;
        pages_ = random_.between(10, 20);
    }
    const auto secondMap = pageSize_ / 5 + 3;
    Buffer file;
    for (std::int64_t n = 1; n <= pages_; ++n) {
        const bool isMap = autoVacuum_ && (n == 2 || n == secondMap || n == secondMap + 1);
        if (isMap && random_.chance(85))
            append(file, pointerMapPage());
        else if (random_.chance(70))
            append(file, treePage());
        else
            append(file, planter_.fill(pageSize_, false));
    }
    if (random_.chance(30)) append(file, planter_.fill(random_.between(1, pageSize_), false));
    writeHeader(file);
    return file;
}

}  // namespace

void store(Buffer& file, std::int64_t offset, std::int64_t length, std::uint64_t value) {
    for (auto at = offset + length - 1; at >= offset; --at, value >>= 8)
        if (at < static_cast<std::int64_t>(file.size()))
            file[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(value);
}

Buffer makeSyntheticFile(RandomSource& random, const std::vector<PlannedPattern>& patterns) {
    return SyntheticFile(random, patterns).make();
}

void damageFile(RandomSource& random, Buffer& file) {
    constexpr std::array<std::uint64_t, 6> kPageSizes{0, 1, 3, 512, 65535, 1024};
    const auto size = [&] { return static_cast<std::int64_t>(file.size()); };
    if (random.chance(35))
        for (auto flips = random.between(1, 60); flips > 0; --flips)
            file[static_cast<std::size_t>(random.below(size()))] = random.byte();
    if (random.chance(25)) file.resize(static_cast<std::size_t>(random.below(size() + 1)));
    if (random.chance(5)) file.resize(std::min<std::size_t>(file.size(), 60));
    if (random.chance(8)) store(file, 16, 2, random.pick(kPageSizes));
    constexpr std::array<std::int64_t, 3> kPageFields{28, 32, 52};
    if (random.chance(40)) {
        const auto value = random.chance(80) ? static_cast<std::uint64_t>(random.below(40))
                                             : random.bits() >> random.between(32, 60);
        store(file, random.pick(kPageFields), 4, value);
    }
    if (file.size() > 1000 && random.chance(30))
        for (auto pages = random.between(1, 4); pages > 0; --pages)
            store(file, random.below(size() / 512) * 512 + 1, 2, random.bits() >> 54);
}

}  // namespace salvor::reference
