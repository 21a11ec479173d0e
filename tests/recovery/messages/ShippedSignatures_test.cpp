#include <gtest/gtest.h>
#include <ostream>
#include <set>
#include <string>

#include "recovery/messages/MessagesSQLiteRecovery.h"
#include "tests/support/RealData.h"
#include "tests/support/Signatures.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {
namespace {

/// Texts by raw date, which no two sample messages share.
std::set<std::string> carvedMessages(const std::filesystem::path& file, int ios) {
    ScanState state;
    state.deviceInfo.iOSMajorVersion = ios;
    state.recoverySignatures = shippedSignatures();
    MessagesSQLiteRecovery carver(state);
    carver.DoRecoveryPath(file);
    std::set<std::string> found;
    for (const auto& record : carver.RecoveredFiltered) {
        const auto& message = static_cast<const Message&>(*record);
        found.insert(std::to_string(static_cast<std::int64_t>(message.OriginalDate)) + " " +
                     message.Text.value_or(""));
    }
    return found;
}

struct Floor {
    int ios;
    AutoVacuum autoVacuum;
    std::size_t perCent;  ///< of the deleted rows whose text is still in the file

    friend std::ostream& operator<<(std::ostream& out, const Floor& floor) {
        return out << "iOS " << floor.ios << ", auto_vacuum " << static_cast<int>(floor.autoVacuum);
    }
};

class ShippedSignatures : public testing::TestWithParam<Floor> {};

// Floors a little below what bench/recall measures: a changed pattern must not lose rows unseen.
TEST_P(ShippedSignatures, BringBackTexts) {
    TempFolder temp;
    SampleOptions options;
    options.ios = GetParam().ios;
    options.autoVacuum = GetParam().autoVacuum;
    options.secureDelete = false;
    const auto sample = SampleBackup::write(temp / "backup", options);
    const auto bytes = readWholeFile(sample.messageDatabase());
    const auto carved = carvedMessages(sample.messageDatabase(), options.ios);

    std::size_t present = 0;
    std::size_t exact = 0;
    for (const auto& row : SampleTruth::of(sample.truth.deleted, "message")) {
        // Short texts stand in many rows, long ones leave the page.
        if (!row.text || row.text->size() < 30 || row.text->size() > 600) continue;
        if (bytes.find(*row.text) == std::string::npos) continue;
        ++present;
        exact += carved.count(std::to_string(row.date) + " " + *row.text);
    }
    ASSERT_GT(present, 10U);
    EXPECT_GE(100 * exact, GetParam().perCent * present) << exact << " of " << present;
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, ShippedSignatures,
    testing::Values(Floor{4, AutoVacuum::None, 75}, Floor{4, AutoVacuum::Full, 80},
                    Floor{5, AutoVacuum::None, 80}, Floor{5, AutoVacuum::Full, 55},
                    Floor{6, AutoVacuum::Full, 75}, Floor{7, AutoVacuum::None, 75},
                    Floor{7, AutoVacuum::Incremental, 75}, Floor{8, AutoVacuum::Incremental, 75},
                    Floor{9, AutoVacuum::Full, 75}));

TEST(ShippedSignaturesOnRealFile, TheDeletedRowComesBack) {
    if (realData().empty()) GTEST_SKIP() << kNoRealData;
    const auto file = realData() / "ios5-messages/snapshots/sms-commit123.db";
    EXPECT_TRUE(carvedMessages(file, 5).contains("1330198000 Aight playa"));
}

}  // namespace
}  // namespace salvor
