#include "carving/format/BtreePage.h"

#include <algorithm>

#include "carving/format/BigEndian.h"
#include "carving/format/Varint.h"

namespace salvor {

std::uint32_t localPayload(std::uint64_t payload, std::uint32_t usable, bool tableLeaf) {
    const std::uint32_t most = tableLeaf ? usable - 35 : (usable - 12) * 64 / 255 - 23;
    if (payload <= most) return static_cast<std::uint32_t>(payload);
    const std::uint32_t least = (usable - 12) * 32 / 255 - 23;
    const auto some = least + static_cast<std::uint32_t>((payload - least) % (usable - 4));
    return some <= most ? some : least;
}

std::optional<BtreePage> BtreePage::read(Bytes page, std::uint32_t pageNumber,
                                         std::uint32_t usable) {
    BtreePage result;
    result.headerAt_ = pageNumber == 1 ? 100 : 0;
    result.usable_ = std::min(usable, static_cast<std::uint32_t>(page.size()));
    if (result.usable_ < result.headerAt_ + 12) return std::nullopt;
    const std::uint8_t type = page[result.headerAt_];
    if (type != InteriorIndex && type != InteriorTable && type != LeafIndex && type != LeafTable)
        return std::nullopt;
    result.page_ = page;
    result.type_ = static_cast<Type>(type);
    result.cells_ = bigEndian16(page, result.headerAt_ + 3);
    if (result.pointersEnd() > result.usable_) return std::nullopt;
    return result;
}

std::uint32_t BtreePage::firstFreeblock() const {
    return bigEndian16(page_, headerAt_ + 1);
}

std::uint32_t BtreePage::contentStart() const {
    const std::uint32_t start = bigEndian16(page_, headerAt_ + 5);
    return start == 0 ? 65536 : start;
}

std::uint32_t BtreePage::rightChild() const {
    return isLeaf() ? 0 : bigEndian32(page_, headerAt_ + 8);
}

std::uint32_t BtreePage::cellPointer(std::uint32_t index) const {
    return bigEndian16(page_, pointersAt() + 2 * std::size_t{index});
}

std::optional<Cell> BtreePage::cellAt(std::uint32_t offset) const {
    if (offset < pointersEnd() || offset + 4 > usable_) return std::nullopt;
    const Bytes page = page_.first(usable_);
    Cell cell;
    cell.start = offset;
    std::uint32_t at = offset;
    if (!isLeaf()) {
        cell.leftChild = bigEndian32(page, at);
        at += 4;
    }
    if (type_ != InteriorTable) {
        const Varint payload = readVarint(page, at);
        if (payload.length == 0) return std::nullopt;
        cell.payload = payload.value;
        at += payload.length;
    }
    if (isTable()) {
        const Varint rowId = readVarint(page, at);
        if (rowId.length == 0) return std::nullopt;
        cell.rowId = static_cast<std::int64_t>(rowId.value);
        at += rowId.length;
    }
    cell.payloadAt = cell.end = at;
    if (type_ != InteriorTable) {
        cell.local = localPayload(cell.payload, usable_, type_ == LeafTable);
        cell.end += cell.local;
        if (cell.local < cell.payload) {
            cell.overflowAt = cell.end;
            cell.end += 4;
        }
    }
    // A freed cell has to hold a freeblock header, so none is shorter than one.
    cell.end = std::max(cell.end, cell.start + 4);
    return cell;
}

bool BtreePage::isSound() const {
    const std::uint32_t start = contentStart();
    const std::uint32_t chain = firstFreeblock();
    if (start < pointersEnd() || start > usable_) return false;
    if (chain != 0 && (chain < pointersEnd() || chain + 4 > usable_)) return false;
    if (cells_ == 0 && !isLeaf()) return false;
    for (std::uint32_t i = 0; i < cells_; ++i) {
        const std::uint32_t pointer = cellPointer(i);
        if (pointer < start || pointer + 4 > usable_) return false;
    }
    return true;
}

}  // namespace salvor
