#include "tests/support/HashTree.h"

#include <chrono>
#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

TEST(HashTree, SeesBytesNamesAndTimes) {
    TempFolder temp;
    const auto file = temp / "file";
    writeWholeFile(file, "one");
    const auto before = hashTree(temp.path());
    EXPECT_EQ(before, hashTree(temp.path()));

    const auto time = std::filesystem::last_write_time(file);
    writeWholeFile(file, "two");
    std::filesystem::last_write_time(file, time);
    EXPECT_NE(before, hashTree(temp.path())) << "changed bytes, same size and time";

    const auto changed = hashTree(temp.path());
    std::filesystem::last_write_time(file, time + std::chrono::seconds(1));
    EXPECT_NE(changed, hashTree(temp.path())) << "touched";
    writeWholeFile(temp / "file-wal", "");
    EXPECT_TRUE(hashTree(temp.path()).contains("file-wal"));
}

}  // namespace
}  // namespace salvor
