#include "carving/deep/FoundRow.h"

#include <algorithm>

#include "carving/format/RecordHeader.h"
#include "carving/format/Varint.h"

namespace salvor::deep {

FoundRow FoundRow::of(const Candidate& from, std::uint32_t image) {
    FoundRow row;
    row.image = image;
    row.start = static_cast<std::uint16_t>(from.start);
    row.typesAt = static_cast<std::uint16_t>(from.typesAt);
    row.lastByte = static_cast<std::uint16_t>(from.standsTo - 1);
    row.table = from.table;
    row.columns = from.columns;
    row.lostType = static_cast<std::uint16_t>(from.lostType);
    row.score = static_cast<std::int16_t>(std::clamp(from.score, -30000.0, 30000.0));
    row.reading = from.reading;
    row.fate = from.isIntact() ? RowFate::Deleted : RowFate::Fragment;
    row.rowIdBytes = from.rowIdBytes;
    row.openFirst = from.openFirst;
    row.rowId = from.rowId;
    row.hasRowId = from.reading == Reading::Whole && from.rowIdBytes != 0;
    return row;
}

Candidate FoundRow::candidate(Bytes page, std::uint32_t usable, bool tableLeaf) const {
    Candidate result;
    result.table = table;
    result.columns = columns;
    result.reading = reading;
    result.rowIdBytes = rowIdBytes;
    result.start = start;
    result.typesAt = typesAt;
    result.lostType = lostType;
    result.rowId = rowId;
    result.score = score;
    const bool typeLost = reading == Reading::AliasLost || reading == Reading::TypeGuessed;
    std::uint64_t body = typeLost ? serialLength(lostType) : 0;
    std::uint32_t at = typesAt;
    for (std::uint32_t i = typeLost ? 1 : 0; i < columns; ++i) {
        const Varint type = readVarint(page, at);
        at += type.length;
        body += serialLength(type.value);
    }
    result.bodyAt = at;
    std::uint64_t header = at - typesAt + (typeLost ? varintLength(lostType) : 0) + 1;
    if (header >= 128) ++header;
    if (!result.place(header, body, usable, tableLeaf)) result.end = result.bodyAt;
    result.standsTo = std::min(result.end, std::uint32_t{lastByte} + 1);
    result.damaged = fate == RowFate::Fragment;
    return result;
}

}  // namespace salvor::deep
