#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "reference/case_report.h"
#include "reference/plain_engine.h"
#include "reference/property_case.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor::reference {
namespace {

constexpr std::uint64_t kDefaultRounds = 500;

std::uint64_t setting(const char* name, std::uint64_t otherwise) {
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

class EngineProperty : public testing::Test {
  protected:
    static std::vector<CarvedRow> actualRows(const SqLiteTableSignatures& signatures,
                                             const TableCarveOptions& run,
                                             const std::filesystem::path& file) {
        std::vector<CarvedRow> rows;
        carveTable(signatures, run, file, {}, [&](const CarvedRow& row) { rows.push_back(row); });
        return rows;
    }

    std::vector<CarvedRow> expectedRows(const PropertyCase& made, const TableCarveOptions& run) {
        auto patterns = made.patterns;
        if (run.version)
            std::erase_if(patterns, [&](const auto& one) { return !one.supports(*run.version); });
        const bool once = run.rowIds == RowCollector::RowIds::FirstOnly;
        auto rows = carvePlainly(patterns, {run.fullSearch, run.callList, once}, made.file);
        for (const CarvedRow& row : rows) ++rowsIn[row.origin.space];
        return rows;
    }

    /// What differs; empty when nothing does.
    std::string holdAgainstEachOther(const PropertyCase& made) {
        writeWholeFile(folder / "signatures.xml", made.signatures);
        writeWholeFile(folder / "carved.db", std::string(made.file.begin(), made.file.end()));
        SqLiteTableSignatures signatures;
        std::string wrong = signatures.loadSignatures(folder / "signatures.xml");
        for (const auto& run : made.runs) {
            if (!wrong.empty()) break;
            wrong = difference(expectedRows(made, run),
                               actualRows(signatures, run, folder / "carved.db"));
        }
        return wrong;
    }

    TempFolder folder;
    std::map<CarvedSpace, int> rowsIn;
};

/// Repeat one round with SALVOR_PROPERTY_SEED set to the printed seed and
/// SALVOR_PROPERTY_ROUNDS to 1.
TEST_F(EngineProperty, CarvesTheRowsOfThePlainEngine) {
    const auto rounds = setting("SALVOR_PROPERTY_ROUNDS", kDefaultRounds);
    const auto first = setting("SALVOR_PROPERTY_SEED", 1);
    constexpr int kShown = 5;
    int failed = 0;
    for (auto seed = first; seed < first + rounds && failed < kShown; ++seed) {
        const auto made = makeCase(seed);
        const std::string wrong = holdAgainstEachOther(made);
        if (wrong.empty()) continue;
        ADD_FAILURE() << "seed " << seed << ": " << wrong << made.signatures;
        failed += 1;
    }
    if (rounds < kDefaultRounds || failed > 0) return;
    for (const auto space : {CarvedSpace::Gap, CarvedSpace::Freeblock, CarvedSpace::FreeList,
                             CarvedSpace::AfterRoot, CarvedSpace::Page})
        EXPECT_GT(rowsIn[space], 500) << toString(space);
}

}  // namespace
}  // namespace salvor::reference
