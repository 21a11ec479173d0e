#include "carving/deep/FoundRows.h"

#include "carving/format/Varint.h"

namespace salvor::deep {

void FoundRows::add(const Candidate& candidate, const PageView& view) {
    FoundRow row = FoundRow::of(candidate, view.image);
    const Record& record = reader_.read(view.where, view.bytes, candidate);
    row.hash = contentHash(record);
    const TableModel& table = survey_.tables()[candidate.table];
    const auto twin = table.twin();
    if (!row.hasRowId && twin && *twin < record.types.size()) {
        record.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
            const auto number = column == *twin ? serialInteger(type, value) : std::nullopt;
            if (!number) return;
            const auto sum = static_cast<std::uint64_t>(*number) +
                             static_cast<std::uint64_t>(*table.columns()[*twin].rowIdOffset());
            row.rowId = static_cast<std::int64_t>(sum);
            row.hasRowId = row.rowId > 0 && varintLength(sum) == row.rowIdBytes;
            row.idSource = RowIdSource::Values;
        });
    }
    rows_.push_back(row);
}

Bytes FoundRows::pageOf(const FoundRow& row) const {
    const PageStore& store = survey_.store();
    return slice(store.bytes(images_[row.image]), 0, store.layout().usable);
}

Candidate FoundRows::candidateOf(const FoundRow& row) const {
    return row.candidate(pageOf(row), survey_.store().layout().usable,
                         !tableOf(row).definition().withoutRowId);
}

const Record& FoundRows::read(const FoundRow& row, RowReader& reader) const {
    return reader.read(images_[row.image], pageOf(row), candidateOf(row));
}

std::int64_t FoundRows::timeOf(const FoundRow& row) const {
    const PageImage& image = images_[row.image];
    if (image.current) return INT64_MAX;
    if (image.file == ImageFile::Wal) return image.frame;
    return image.file == ImageFile::Main ? 0 : -1;
}

}  // namespace salvor::deep
