#include <filesystem>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"
#include "tools/sample/SampleRandom.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

/// The program as the shell starts it: limits, signals and full disks reach it as in real life.
class ProcessTest : public testing::Test {
  protected:
    ProcessTest() { SampleBackup::write(folder / "backup"); }

    /// Runs a shell line in which $salvor is the program, $scan its scan of the sample.
    void shell(const std::string& line) {
        const std::string script = fmt::format(
            "cd '{}'; export HOME=$PWD XDG_CACHE_HOME=$PWD/cache salvor='{}/bin/salvor'; "
            "scan=\"$salvor scan backup --signatures {}\"; ( {} ) >out 2>err",
            folder.path().string(), SALVOR_BINARY_DIR,
            SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml", line);
        writeWholeFile(folder / "script", script);
        const int ended = std::system(("bash '" + (folder / "script").string() + "'").c_str());
        ASSERT_TRUE(WIFEXITED(ended));
        status = WEXITSTATUS(ended);
        out = readWholeFile(folder / "out");
        err = readWholeFile(folder / "err");
    }

    std::vector<std::string> exported() const {
        std::vector<std::string> names;
        if (!fs::exists(folder / "export")) return names;
        for (const auto& entry : fs::recursive_directory_iterator(folder / "export")) {
            if (entry.is_regular_file()) names.push_back(entry.path().filename());
        }
        return names;
    }

    TempFolder folder;
    int status = -1;
    std::string out;
    std::string err;
};

// The limit stands for a full disk: writes fail in the middle of a file.
TEST_F(ProcessTest, AFullDiskCostsTheFilesThatDoNotFitAndSaysSo) {
    shell("trap '' XFSZ; ulimit -f 8; $scan --no-progress --export export --json result.json");
    EXPECT_EQ(status, 5);
    EXPECT_THAT(out, StartsWith("Category "));
    EXPECT_THAT(err, HasSubstr("SMS.csv: File too large\n"));
    EXPECT_THAT(err, HasSubstr("salvor: error: result.json: "));
    EXPECT_FALSE(fs::exists(folder / "result.json"));
    EXPECT_THAT(exported(), testing::Not(testing::Contains("SMS.csv")));
    EXPECT_THAT(exported(), testing::Contains("Calendar.csv"));
}

TEST_F(ProcessTest, OutputThatCannotBeWrittenIsAnError) {
    shell("$scan --quiet --json - >/dev/full");
    EXPECT_EQ(status, 5);
    EXPECT_THAT(err, HasSubstr("salvor: error: "));
    shell("$scan --no-progress --export /proc/export");
    EXPECT_EQ(status, 5);
    EXPECT_THAT(err, HasSubstr("salvor: error: /proc/export"));
    EXPECT_THAT(out, StartsWith("Category ")) << "what was found is shown";
    shell("set -o pipefail; $scan --json - | head -c 10");
    EXPECT_EQ(status, 0);
}

TEST_F(ProcessTest, SignalsAtAnyMomentEndInAWholeTableAndNoRest) {
    const auto before = hashTree(folder / "backup");
    SampleRandom random(3);
    for (int round = 0; round < 12; ++round) {
        fs::remove_all(folder / "export");
        shell(fmt::format(
            "timeout --foreground --preserve-status -s {} 0.{:03} $scan --export export",
            round % 2 == 0 ? "INT" : "TERM", random.between(20, 400)));
        // Before its handler stands the program ends as the signal says.
        EXPECT_THAT(status, AnyOf(0, 130, 128 + SIGINT, 128 + SIGTERM)) << err;
        if (!out.empty()) {
            EXPECT_THAT(out, StartsWith("Category "));
            EXPECT_THAT(out, HasSubstr("\nexport/")) << "what was found is exported";
        }
        EXPECT_TRUE(!fs::exists(folder / "cache/salvor") || fs::is_empty(folder / "cache/salvor"));
        EXPECT_EQ(hashTree(folder / "backup"), before);
    }
}

TEST_F(ProcessTest, AKilledExportHasNotTheNameOfAWholeOne) {
    // A picture that takes the copying long enough to be met.
    shell(
        "f=backup/$(printf '%040d' 1); printf '......JFIF\\0.........' >$f; "
        "dd if=/dev/zero bs=1M count=300 status=none >>$f; "
        "$scan --quiet --export export & while [ -z \"$(ls -d export/*/Photos 2>&-)\" ]; do :; "
        "done; kill -KILL $!; wait $!; ls export");
    EXPECT_THAT(out, testing::MatchesRegex("Sample iPhone - [^\n]*M\\.part\n"));
}

// In a house whose build is done: the program there says what it is asked.
TEST_F(ProcessTest, TheRunScriptPassesOptionsOnAndAsksForTheVersionThatIsTold) {
    shell(
        fmt::format("mkdir -p house/tools house/build/release/bin bin; cp '{}/run' house; "
                    "echo true > house/tools/install-packages; echo true > bin/cmake; "
                    "echo 'echo \"$@\"' > house/build/release/bin/salvor; "
                    "chmod +x house/tools/* bin/* house/build/release/bin/*",
                    SALVOR_SOURCE_DIR));
    const std::string house = folder / "house";
    const std::string exports = " --export " + house + "/salvor-export\n";
    const std::pair<const char*, std::string> cases[] = {
        {"backup", "scan backup --ios auto" + exports},
        {"backup --json x --quiet", "scan backup --json x --quiet --ios auto" + exports},
        {"backup --ios=7.1 --export out", "scan backup --ios=7.1 --export out\n"},
    };
    for (const auto& [words, asked] : cases) {
        shell(std::string("PATH=$PWD/bin:$PATH house/run ") + words);
        EXPECT_EQ(status, 0) << err;
        EXPECT_EQ(out, asked);
    }
    shell("house/run --quiet");
    EXPECT_EQ(status, 2);
}

TEST_F(ProcessTest, AnInterruptEndsTheJsonObjectThatNobodyReads) {
    shell(
        "mkfifo pipe; exec 3<>pipe; $scan --json - 2>told >pipe & scan=$!; "
        "until grep -qs Printing told; do :; done; kill -INT $scan; wait $scan");
    EXPECT_EQ(status, 130) << readWholeFile(folder / "told");
}

}  // namespace
}  // namespace salvor::cli
