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
    struct Case {
        const char* path;
        bool inside;
    };
    const Case cases[] = {
        {"backup", true},
        {"backup/", true},
        {"backup/inner", true},
        {"backup/new/deeper", true},
        {"backup/../backup/new", true},
        {"out/../backup/new", true},
        {"link", true},
        {"link/new", true},
        {"dangling", true},
        {"dangling/deeper", true},
        {"chain", true},
        {"out/in/new", true},
        {"out/in/..", true},  // the parent of where the link leads
        {"backup2", false},
        {"backup2/new", false},
        {"backup/..", false},
        {"backup/../out", false},
        {"new", false},
        {"loop", false},
        {"", false},
    };
    for (const auto& [path, inside] : cases) {
        EXPECT_EQ(liesInside(folder_ / path, folder_ / "backup"), inside) << path;
        EXPECT_EQ(liesInside(folder_ / path, folder_ / "link/"), inside) << path << " (link)";
    }
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
