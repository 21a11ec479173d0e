#include "carving/deep/RowListing.h"

#include <algorithm>
#include <array>
#include <bit>
#include <fmt/format.h>

#include "carving/deep/TextTraits.h"
#include "carving/format/BigEndian.h"

namespace salvor::deep {
namespace {

constexpr std::array<const char*, 5> kStates = {"live", "deleted", "earlier", "dropped",
                                                "fragment"};
constexpr std::array<const char*, 3> kConfidences = {"certain", "likely", "possible"};

constexpr std::array<const char*, 5> kIdSources = {
    "", "the row id follows from its values", "another copy tells the row id",
    "the live row tells the row id", "an index entry tells the row id"};

/// From which scores on a reading is certain, and below which it is merely possible.
struct ReadingRow {
    double certain;
    double likely;
    const char* reason;
};
constexpr double kNever = 1e9;
constexpr std::array<ReadingRow, 5> kReadings = {{
    {40, 0, "the cell is whole"},
    {70, 35, "its first bytes are a freeblock's header; the record header stands"},
    {70, 35, "its first bytes and the record header's length are lost"},
    {70, 45, "its first bytes are lost, with the type of the row id's column"},
    {kNever, 45, "its first bytes are lost; the first column's type follows from its end"},
}};

const ReadingRow& readingRow(const FoundRow& row) {
    return kReadings.at(static_cast<std::size_t>(row.reading));
}

RecoveredValue valueOf(std::uint64_t type, Bytes value, TextEncoding encoding) {
    const SerialClass kind = serialClass(type);
    if (kind == kNull) return std::monostate();
    if (kind == kFloat) return std::bit_cast<double>(bigEndian<8>(value, 0));
    if (kind == kText)
        if (auto text = toUtf8(value, encoding)) return *std::move(text);
    if (kind == kText || kind == kBlob) return RawBytes{{value.begin(), value.end()}};
    return serialInteger(type, value).value_or(0);
}

/// The text without a last character that is cut.
Bytes wholeCharacters(Bytes text, TextEncoding encoding) {
    constexpr std::size_t kLongest = 4;
    for (std::size_t less = 0; less < kLongest && less < text.size(); ++less)
        if (textTraits(text.first(text.size() - less), encoding).valid)
            return text.first(text.size() - less);
    return text;
}

RowState stateOf(const FoundRow& row, const TableModel& table) {
    if (row.fate == RowFate::Fragment) return RowState::Fragment;
    if (row.fate == RowFate::Earlier) return RowState::Earlier;
    return table.dropped ? RowState::Dropped : RowState::Deleted;
}

}  // namespace

const char* toString(RowState state) {
    return kStates.at(static_cast<std::size_t>(state));
}

const char* toString(Confidence confidence) {
    return kConfidences.at(static_cast<std::size_t>(confidence));
}

Confidence RowListing::confidenceOf(const FoundRow& row) const {
    const ReadingRow& limits = readingRow(row);
    if (row.score >= limits.certain) return Confidence::Certain;
    const bool tried = row.reading == Reading::TypeGuessed && !found_.tableOf(row).isLearned();
    return tried || row.score < limits.likely ? Confidence::Possible : Confidence::Likely;
}

void RowListing::addColumns(const Record& record, std::uint64_t bodyOffset, std::uint64_t onPage,
                            const TableDefinition& definition, bool openFirst,
                            RecoveredRow& out) const {
    const TextEncoding encoding = found_.survey().store().layout().encoding;
    std::uint64_t at = 0;
    out.columns.reserve(definition.columns.size());
    record.eachValue([&](std::size_t column, std::uint64_t type, Bytes value) {
        const std::uint64_t from = at;
        at += value.size();
        // A live row of a damaged file may have more columns than its table.
        if (column >= definition.columns.size()) return;
        if (value.size() != serialLength(type)) {
            if (!value.empty() && serialClass(type) == kText) {
                const std::string& name = definition.columns[column].name;
                out.reasons.push_back(fmt::format("of {} only the beginning is left", name));
                value = wholeCharacters(value, encoding);
            } else {
                out.missing.push_back(column);
                return;
            }
        }
        if (column == 0 && openFirst) {
            out.missing.push_back(column);
            return;
        }
        RecoveredColumn told{
            column, valueOf(type, value, encoding), bodyOffset + from,
            std::min<std::uint64_t>(value.size(), onPage - std::min(onPage, from))};
        if (definition.alias == column)
            told.value = out.rowId ? RecoveredValue(*out.rowId) : std::monostate();
        out.columns.push_back(std::move(told));
    });
    // A row from before a column was added holds that column's default, which was NULL unless the
    // definition says otherwise.
    for (std::size_t i = record.types.size(); i < definition.columns.size(); ++i)
        out.columns.push_back({i, std::monostate(), 0, 0});
}

std::vector<std::string> RowListing::reasonsOf(const FoundRow& row) const {
    const TableModel& table = found_.tableOf(row);
    std::vector<std::string> reasons{readingRow(row).reason,
                                     fmt::format("structure and values weigh {} bits", row.score)};
    if (row.hasRowId && row.idSource != RowIdSource::Cell)
        reasons.emplace_back(kIdSources.at(static_cast<std::size_t>(row.idSource)));
    if (!table.isLearned()) reasons.emplace_back("few rows of the table are known to compare with");
    return reasons;
}

RowPlace RowListing::placeOf(const FoundRow& row) {
    const PageImage& image = found_.images()[row.image];
    if (view_.where.page == 0 || view_.image != row.image || view_.bytes.empty())
        viewer_.look(image, row.image, view_);
    return {image.file,
            image.page,
            image.frame,
            found_.offsetOf(row),
            row.lastByte + std::uint64_t{1} - row.start,
            view_.spaceAt(row.start)};
}

RecoveredRow RowListing::listed(const FoundRow& row) {
    const TableModel& table = found_.tableOf(row);
    RecoveredRow out;
    out.table = row.table;
    out.state = stateOf(row, table);
    out.confidence = confidenceOf(row);
    if (row.hasRowId) out.rowId = row.rowId;
    out.reasons = reasonsOf(row);
    const Candidate candidate = found_.candidateOf(row);
    const std::uint64_t page = found_.images()[row.image].offset;
    addColumns(found_.read(row, candidate), page + candidate.bodyAt,
               candidate.standsTo - std::min(candidate.standsTo, candidate.bodyAt),
               table.definition(), row.openFirst, out);
    out.origins.push_back(placeOf(row));
    for (std::uint32_t next = row.nextCopy; next != FoundRow::kNone;) {
        const FoundRow& copy = found_.rows()[next];
        out.origins.push_back(placeOf(copy));
        next = copy.nextCopy;
    }
    return out;
}

RecoveredRow RowListing::live(std::uint16_t table, const PageImage& image, const Cell& cell,
                              const Record& record) const {
    const TableDefinition& definition = found_.survey().tables()[table].definition();
    RecoveredRow out;
    out.table = table;
    out.state = RowState::Live;
    if (!definition.withoutRowId) out.rowId = cell.rowId;
    addColumns(record, image.offset + cell.payloadAt + record.body,
               cell.local - std::min<std::uint64_t>(cell.local, record.body), definition, false,
               out);
    out.origins.push_back({image.file, image.page, image.frame, image.offset + cell.start,
                           cell.end - cell.start, Space::OldCell});
    return out;
}

}  // namespace salvor::deep
