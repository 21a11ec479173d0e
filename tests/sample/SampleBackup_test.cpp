#include "tools/sample/SampleBackup.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

class SampleOfVersion : public testing::TestWithParam<int> {
  protected:
    SampleBackup make(SampleOptions options = {}) {
        options.ios = GetParam();
        return SampleBackup::write(temp_ / "backup", options);
    }
    TempFolder temp_;
};

TEST_P(SampleOfVersion, TruthAgreesWithTheDatabases) {
    const auto sample = make();
    std::map<std::pair<std::string, std::string>, std::set<std::int64_t>> live;
    std::set<std::string> ways;
    const auto rowsOf = [&](const TruthRow& row) -> const std::set<std::int64_t>& {
        auto& rows = live[{row.database, row.table}];
        if (!rows.empty()) return rows;
        SqliteFile database(sample.folder / row.database);
        EXPECT_EQ(database.query("PRAGMA integrity_check")[0], SqliteRow{std::string("ok")});
        for (const auto& one : database.query("SELECT rowid FROM " + row.table))
            rows.insert(std::get<std::int64_t>(one[0]));
        return rows;
    };
    std::size_t files = 0;
    for (const auto& row : sample.truth.live) {
        const bool isFile = row.rowId == 0;
        files += isFile ? 1U : 0U;
        EXPECT_TRUE(isFile || rowsOf(row).contains(row.rowId));
    }
    for (const auto& row : sample.truth.deleted) {
        EXPECT_FALSE(rowsOf(row).contains(row.rowId));
        if (row.table == "message") ways.insert(row.how);
    }
    std::size_t rows = 0;
    for (const auto& [table, ids] : live) rows += ids.size();
    EXPECT_EQ(rows + files, sample.truth.live.size());
    EXPECT_EQ(ways.size(), 4U) << "every way of deleting must occur";
}

TEST_P(SampleOfVersion, SecureDeleteAloneDecidesWhetherTextsStay) {
    const auto countLeft = [this](bool secure) {
        SampleOptions options;
        options.secureDelete = secure;
        options.autoVacuum = AutoVacuum::None;
        const auto sample = make(options);
        const auto bytes = readWholeFile(sample.messageDatabase());
        return std::count_if(
            sample.truth.deleted.begin(), sample.truth.deleted.end(), [&](const TruthRow& row) {
                return row.text && row.text->size() > 40 && row.text->size() < 200 &&
                       bytes.find(*row.text) != std::string::npos;
            });
    };
    EXPECT_GT(countLeft(false), 10);
    EXPECT_EQ(countLeft(true), 0);
}

INSTANTIATE_TEST_SUITE_P(Versions, SampleOfVersion, testing::Range(4, 10));

TEST(SampleBackup, EqualOptionsGiveEqualFilesAndAnotherSeedOthers) {
    TempFolder temp;
    SampleOptions options;
    options.messages = 60;
    const auto first = SampleBackup::write(temp / "a", options);
    const auto second = SampleBackup::write(temp / "b", options);
    options.seed = 2;
    const auto other = SampleBackup::write(temp / "c", options);
    const auto bytes = readWholeFile(first.messageDatabase());
    EXPECT_EQ(bytes, readWholeFile(second.messageDatabase()));
    EXPECT_NE(bytes, readWholeFile(other.messageDatabase()));
    EXPECT_EQ(readWholeFile(first.folder / "Manifest.mbdb"),
              readWholeFile(second.folder / "Manifest.mbdb"));
}

TEST(SampleBackup, NestedLayoutPutsFilesIntoTwoDigitFolders) {
    TempFolder temp;
    SampleOptions options;
    options.nested = true;
    options.messages = 10;
    const auto sample = SampleBackup::write(temp / "backup", options);
    EXPECT_TRUE(
        std::filesystem::exists(sample.folder / "3d" / "3d0d7e5fb2ce288813306e4d4636395e047a3d28"));
}

}  // namespace
}  // namespace salvor
