#include "recovery/NoteBodiesSQLiteRecovery.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <memory>
#include <vector>

namespace salvor {
namespace {

void storeOwner(NoteBody& body, const OptionalColumnValue& value) {
    body.Owner = static_cast<std::int32_t>(columnInteger(value));
}

constexpr ColumnAttribute<NoteBody> kAttributes[] = {
    {"ZOWNER", storeOwner},
    {"ZCONTENT", storeText<&NoteBody::Content>},
};

constexpr ColumnAttribute<NoteBody> kNoteStoreAttributes[] = {
    {"ZNOTE", storeOwner},
    {"ZDATA", storeText<&NoteBody::Content>},
};

constexpr SignatureKey kNoteBody{"HomeDomain", "notes.sqlite", "ZNOTEBODY"};
constexpr SignatureKey kNoteData{"HomeDomain", "notes.sqlite", "ZICNOTEDATA"};

std::vector<std::int32_t> widened(const std::vector<std::int32_t>& codes) {
    std::vector<std::int32_t> wide;
    for (const std::int32_t code : codes) {
        if (code == 12 || code == 13)
            wide.insert(wide.end(), {12, 13});
        else
            wide.push_back(code == -2 ? -1 : code);
    }
    return wide;
}

// Kept: note-store-headers.
TablePatterns widened(const TablePatterns& patterns) {
    TablePatterns wide;
    for (const auto& pattern : patterns) {
        auto copy = std::make_shared<TablePattern>(*pattern);
        copy->headerPattern.clear();
        for (const auto& codes : pattern->Header()) {
            const bool first = copy->headerPattern.empty();  // says how the row begins, no type
            copy->headerPattern += fmt::format("{}[{}]", first ? "" : ";",
                                               fmt::join(first ? codes : widened(codes), ","));
        }
        wide.push_back(std::move(copy));
    }
    return wide;
}

}  // namespace

constinit const SignatureUse<NoteBody> NoteBodiesSQLiteRecovery::kSignature{kNoteBody, kAttributes};
constinit const SignatureUse<NoteBody> NoteBodiesIOS9SQLiteRecovery::kSignature{
    kNoteData, kNoteStoreAttributes};

NoteBodiesSQLiteRecovery::NoteBodiesSQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : CategoryCarver(state, std::move(cancelled), kSignature) {}

NoteBodiesSQLiteRecovery::NoteBodiesSQLiteRecovery(ScanState& state, std::stop_token cancelled,
                                                   const SignatureUse<NoteBody>& use)
    : CategoryCarver(state, std::move(cancelled), use) {}

void NoteBodiesSQLiteRecovery::recordCarved(const std::shared_ptr<NoteBody>& body) {
    RecoveredFiltered.push_back(body);  // Kept: bodies-at-once.
}

void NoteBodiesSQLiteRecovery::filterMessages() {
    // Kept: unquoted-values.
    keepRecordsWithoutLiveRow([](const NoteBody& body) {
        return fmt::format("SELECT ZCONTENT FROM ZNOTEBODY where ZCONTENT={}",
                           body.Content.value_or("(null)"));
    });
}

NoteBodiesIOS9SQLiteRecovery::NoteBodiesIOS9SQLiteRecovery(ScanState& state,
                                                           std::stop_token cancelled)
    // A run reads the older table with the names of the newer one; only `DoRecovery` reads its own.
    // Kept: older-note-carvers.
    : NoteBodiesSQLiteRecovery(state, std::move(cancelled), {kNoteBody, kNoteStoreAttributes}) {}

void NoteBodiesIOS9SQLiteRecovery::DoRecovery(const std::filesystem::path& path) {
    fullDBPath = path.string();
    tablePatterns.clear();
    const auto database = openDatabase();
    if (!database) return;
    if (database->executeQuery("SELECT * FROM ZICNOTEDATA").next())
        tablePatterns = widened(patternsOf(state_, kSignature.key));
    // The patterns are chosen: past the record carver, which would choose them.
    AbstractSqLiteRecovery::DoRecoveryPath(path);  // NOLINT(bugprone-parent-virtual-call)
}

std::optional<SQLiteTableHeaderInfo> NoteBodiesIOS9SQLiteRecovery::FindSQLiteTableHeader(
    Bytes data, std::int64_t offset) const {
    return findHeader(widened(tablePatterns), data, offset);
}

bool NoteBodiesIOS9SQLiteRecovery::IsGzipHeaderValue(Bytes data) {
    static constexpr std::array<std::uint8_t, 4> kMagic{0x1F, 0x8B, 0x08, 0x00};
    return data.size() >= 8 && std::equal(kMagic.begin(), kMagic.end(), data.begin());
}

}  // namespace salvor
