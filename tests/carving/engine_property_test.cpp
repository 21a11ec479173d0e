#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "app/state/ScanState.h"
#include "carving/AbstractSQLiteRecoveryFullSearch.h"
#include "carving/TableCarver.h"
#include "reference/case_report.h"
#include "reference/literal_engine.h"
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

using RowSink = std::function<void(const CarvedRow&)>;

/// Hands on every record, those with a known row id too.
template <class Engine>
class EveryRecordCarver : public Engine {
  public:
    EveryRecordCarver(ScanState& state, const RowSink& found) : Engine(state), found_(found) {}

  protected:
    std::shared_ptr<baseRecoveryObject> GetNewRecoveryObject() override {
        columns_.clear();
        return std::make_shared<baseRecoveryObject>();
    }
    void FillModel(std::int64_t column, const OptionalColumnValue& value,
                   const TablePattern& pattern) override {
        const AttributesMapping* mapping = pattern.mappingForColumn(column);
        if (mapping == nullptr) return;
        this->_field = mapping->Name;
        for (auto& [name, known] : columns_) {
            if (name != mapping->Name) continue;
            known = value;
            return;
        }
        columns_.emplace_back(mapping->Name, value);
    }
    std::int32_t verifyDataPosition(Bytes text) override {
        if (this->_field != "ZStandZAid") return this->kNoCorrection;
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] == '-') return static_cast<std::int32_t>(i) - 10;
        return -11;
    }
    void addRecoveredObject() override {
        found_({this->_recObject->RowId, columns_, this->_recObject->Origin.value()});
    }

  private:
    const RowSink& found_;
    decltype(CarvedRow::columns) columns_;
};

template <class Engine>
void carveEveryRecord(const TablePatterns& patterns, bool callList,
                      const std::filesystem::path& file, const RowSink& found) {
    ScanState state;
    EveryRecordCarver<Engine> carver(state, found);
    carver.tablePatterns = patterns;
    carver.setWorkingOnCallList(callList);
    carver.DoRecoveryPath(file);
}

void carveEveryRecord(const SqLiteTableSignatures& signatures, const CaseRun& run,
                      const std::filesystem::path& file, const RowSink& found) {
    const auto signature = signatures.Find(kCaseDomain, kCaseDatabase, kCaseTable);
    const TablePatterns patterns =
        run.version ? signature->FindPatternsByVersion(*run.version) : signature->TablePatterns;
    const auto carve = run.fullSearch ? carveEveryRecord<AbstractSQLiteRecoveryFullSearch>
                                      : carveEveryRecord<AbstractSqLiteRecovery>;
    carve(patterns, run.callList, file, found);
}

class EngineProperty : public testing::Test {
  protected:
    static std::vector<CarvedRow> actualRows(const SqLiteTableSignatures& signatures,
                                             const CaseRun& run,
                                             const std::filesystem::path& file) {
        std::vector<CarvedRow> rows;
        const RowSink found = [&](const CarvedRow& row) { rows.push_back(row); };
        const TableCarveOptions options{kCaseDomain, kCaseDatabase,  kCaseTable,
                                        run.version, run.fullSearch, run.callList};
        if (run.everyRecord)
            carveEveryRecord(signatures, run, file, found);
        else
            carveTable(signatures, options, file, {}, found);
        return rows;
    }

    std::vector<CarvedRow> expectedRows(const PropertyCase& made, const CaseRun& run) {
        auto patterns = made.patterns;
        if (run.version)
            std::erase_if(patterns, [&](const auto& one) { return !one.supports(*run.version); });
        return carveLiterally(patterns, {run.fullSearch, run.callList, !run.everyRecord}, made.file,
                              events);
    }

    /// What differs; empty when nothing does.
    std::string holdAgainstEachOther(const PropertyCase& made) {
        writeWholeFile(folder / "signatures.xml", made.signatures);
        writeWholeFile(folder / "carved.db", std::string(made.file.begin(), made.file.end()));
        SqLiteTableSignatures signatures;
        std::string wrong = signatures.loadSignatures(folder / "signatures.xml");
        for (const CaseRun& run : made.runs) {
            if (!wrong.empty()) break;
            wrong = difference(expectedRows(made, run),
                               actualRows(signatures, run, folder / "carved.db"));
        }
        return wrong;
    }

    TempFolder folder;
    Events events;
};

/// Repeat one round with SALVOR_PROPERTY_SEED set to the printed seed and
/// SALVOR_PROPERTY_ROUNDS to 1.
TEST_F(EngineProperty, CarvesTheRowsOfTheLiteralEngine) {
    const auto rounds = setting("SALVOR_PROPERTY_ROUNDS", kDefaultRounds);
    const auto first = setting("SALVOR_PROPERTY_SEED", 1);
    constexpr int kShown = 5;
    int failed = 0;
    for (auto seed = first; seed < first + rounds && failed < kShown; ++seed) {
        const auto made = makeCase(seed, folder.path().string());
        const std::string wrong = holdAgainstEachOther(made);
        if (wrong.empty()) continue;
        ADD_FAILURE() << "seed " << seed << ", " << made.kind << ": " << wrong << made.signatures;
        failed += 1;
    }
    if (rounds < kDefaultRounds || failed > 0) return;
    for (std::size_t i = 0; i < kEventNames.size(); ++i)
        EXPECT_GT(events[i], 0U) << kEventNames[i] << " never happened";
}

}  // namespace
}  // namespace salvor::reference
