#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace salvor::deep {

/// What the database as a reader sees it uses a page for.
enum class PageUse : std::uint8_t {
    None,  ///< nothing leads to it
    TableTree,
    IndexTree,
    Overflow,
    Trunk,
    FreeLeaf,
    PointerMap,
    LockByte,
};

inline constexpr std::uint16_t kNoTable = 0xFFFF;

/// The use of every page and the table it belongs to. Page numbers that do not exist have none.
class PageUses {
  public:
    struct Entry {
        PageUse use = PageUse::None;
        std::uint16_t table = kNoTable;
    };

    explicit PageUses(std::uint32_t pages) : entries_(std::size_t{pages} + 1) {}

    Entry of(std::uint32_t page) const { return page < entries_.size() ? entries_[page] : Entry{}; }
    /// False when the page has a use already.
    bool claim(std::uint32_t page, PageUse use, std::uint16_t table) {
        if (page == 0 || page >= entries_.size() || entries_[page].use != PageUse::None)
            return false;
        entries_[page] = {use, table};
        return true;
    }
    /// Says which table a page that is free now once belonged to; the first word counts.
    void setFormerOwner(std::uint32_t page, std::uint16_t table) {
        if (page < entries_.size() && entries_[page].table == kNoTable)
            entries_[page].table = table;
    }
    /// Where the content of a chain's last page ends; of a trunk, its list of leaves. 0 elsewhere.
    std::uint32_t contentEnd(std::uint32_t page) const {
        const auto found = ends_.find(page);
        return found == ends_.end() ? 0 : found->second;
    }
    void setContentEnd(std::uint32_t page, std::uint32_t end) { ends_[page] = end; }

  private:
    std::vector<Entry> entries_;
    std::unordered_map<std::uint32_t, std::uint32_t> ends_;
};

}  // namespace salvor::deep
