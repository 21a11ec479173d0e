// Database header and page walk over a whole file. Files that are small enough are carved by the
// reference engine too. Two bytes that SQLite keeps for later (72 and 73) choose signature and way;
// the upper six bits of the second narrow the patterns to a version.
#include "carving/TableCarver.h"
#include "carving/format/SQLiteHeader.h"
#include "fuzz/ShippedSignatures.h"
#include "fuzz/Target.h"
#include "reference/case_report.h"
#include "reference/plain_engine.h"

using namespace salvor;

namespace {

constexpr std::size_t kChoice = 72;
/// The reference engine copies what it looks at, pattern by pattern.
constexpr std::size_t kMostCompared = 12 << 10;

std::uint8_t byteAt(Bytes input, std::size_t at) {
    return at < input.size() ? input[at] : std::uint8_t{0};
}

/// Every version that a pattern of the signature names, once or more often.
std::vector<std::string> versionsOf(const SQLiteSignature& signature) {
    std::vector<std::string> versions;
    for (const auto& pattern : signature.TablePatterns) {
        const auto& more = pattern->SupportedVersions;
        versions.insert(versions.end(), more.begin(), more.end());
    }
    return versions;
}

std::optional<std::string> versionOf(const SQLiteSignature& signature, unsigned choice) {
    const auto versions = versionsOf(signature);
    if (choice == 0 || choice > versions.size()) return std::nullopt;
    return versions[choice - 1];
}

std::vector<CarvedRow> carve(const TableCarveOptions& options, const fuzz::InputFile& file) {
    std::vector<CarvedRow> rows;
    carveTable(*fuzz::shippedSignatures(), options, file.path(), {},
               [&](const CarvedRow& row) { rows.push_back(row); });
    return rows;
}

void checkOrigins(const std::vector<CarvedRow>& rows, std::size_t fileSize) {
    for (const auto& row : rows) {
        fuzz::expect(row.origin.offset < fileSize, "a record lies in the file");
        fuzz::expect(row.origin.page > 0, "pages count from 1");
    }
}

}  // namespace

SALVOR_FUZZ_TARGET(database_pages) {
    const fuzz::InputFile file(input);
    const auto header = SQLiteHeader::fromBytes(input);
    const auto fileHeader = SQLiteHeader::initWithDatabasePath(file.path());
    fuzz::expect(header.has_value() == fileHeader.has_value(), "one header");
    if (header) header->SQLiteDatabaseSizeInBytes();

    const auto& all = fuzz::shippedSignatures()->tableSignatures;
    const auto& chosen = *all.at(byteAt(input, kChoice) % all.size());
    TableCarveOptions options{chosen.Name, chosen.Database, chosen.Table, {}, false, false, {}};
    options.version = versionOf(chosen, byteAt(input, kChoice + 1) >> 2U);
    options.fullSearch = (byteAt(input, kChoice + 1) & 1) != 0;
    options.callList = (byteAt(input, kChoice + 1) & 2) != 0;

    const auto rows = carve(options, file);
    checkOrigins(rows, input.size());
    if (input.size() > kMostCompared) return;
    const auto patterns = fuzz::referencePatterns(
        options.version ? chosen.FindPatternsByVersion(*options.version) : chosen.TablePatterns);
    const auto wrong = reference::difference(
        reference::carvePlainly(patterns, {options.fullSearch, options.callList, true},
                                {input.begin(), input.end()}),
        rows);
    fuzz::expect(wrong.empty(), wrong);
}
