#include "util/PathRules.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

class PathRulesTest : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(folder_ / "backup/inner");
        fs::create_directories(folder_ / "backup2");
        fs::create_directories(folder_ / "out");
        fs::create_directory_symlink(folder_ / "backup", folder_ / "link");
        fs::create_directory_symlink(folder_ / "backup/not-yet", folder_ / "dangling");
        fs::create_directory_symlink("dangling", folder_ / "chain");
        fs::create_directory_symlink("loop", folder_ / "loop");
        fs::create_directory_symlink(folder_ / "backup/inner", folder_ / "out/in");
    }

    TempFolder folder_;
};

TEST_F(PathRulesTest, TellsWhatLiesInsideAFolder) {
    const auto expect = [this](bool inside, std::initializer_list<const char*> paths) {
        for (const char* path : paths) {
            EXPECT_EQ(liesInside(folder_ / path, folder_ / "backup"), inside) << path;
            EXPECT_EQ(liesInside(folder_ / path, folder_ / "link/"), inside) << path << " (link)";
        }
    };
    expect(true, {"backup", "backup/", "backup/inner", "backup/new/deeper", "backup/../backup/new",
                  "out/../backup/new"});
    expect(true, {"link", "link/new", "dangling", "dangling/deeper", "chain", "out/in/new"});
    expect(true, {"out/in/.."});  // the parent of where the link leads
    expect(false, {"backup2", "backup2/new", "backup/..", "backup/../out", "new", "loop", ""});
}

TEST_F(PathRulesTest, TakesRelativePathsFromTheCurrentFolder) {
    const auto before = fs::current_path();
    fs::current_path(folder_ / "backup");
    EXPECT_TRUE(liesInside("new", "."));
    EXPECT_FALSE(liesInside("../new", "."));
    fs::current_path(before);
}

}  // namespace
}  // namespace salvor
