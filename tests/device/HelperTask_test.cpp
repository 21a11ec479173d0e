#include "device/HelperTask.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <future>
#include <gmock/gmock.h>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::HasSubstr;

struct Outcome {
    HelperResult result;
    std::vector<HelperProgress> progress;
    std::chrono::steady_clock::duration took{};
};

class HelperTasks : public testing::Test {
  protected:
    HelperTasks() { std::signal(SIGPIPE, SIG_IGN); }  // as the program itself has it
    ~HelperTasks() override { std::signal(SIGPIPE, SIG_DFL); }

    /// Runs the words to their end; cancels with the first progress.
    static Outcome run(const std::vector<std::string>& words, bool cancels = false) {
        Outcome outcome;
        std::promise<HelperResult> ended;
        std::promise<void> now;
        const auto begin = std::chrono::steady_clock::now();
        HelperTask task(
            words,
            [&](const HelperProgress& progress) {
                outcome.progress.push_back(progress);
                if (outcome.progress.size() == 1) now.set_value();
            },
            [&](const HelperResult& result) { ended.set_value(result); });
        if (cancels) {
            now.get_future().wait_for(10s);
            task.cancel();
        }
        outcome.result = ended.get_future().get();
        outcome.took = std::chrono::steady_clock::now() - begin;
        return outcome;
    }
    static Outcome runScript(const std::string& text, bool cancels = false) {
        return run({"sh", "-c", text}, cancels);
    }

    TempFolder folder;
};

struct EndCase {
    const char* what;
    const char* script;
    int exitStatus;  ///< or the negative number of a signal
    const char* usefulLine;
    bool cancelled = false;  ///< as soon as it writes something
};

const EndCase kEndCases[] = {
    {"done", "echo 100% done", 0, "100% done"},
    {"refused, and says why last", "echo 3%; echo first >&2; printf 'locked\\n\\n' >&2; exit 1", 1,
     "locked"},
    {"says the cause before its last words",
     "echo 'ErrorCode 208: Device locked (MBErrorDomain/208)'; echo '2 files.'; echo odd >&2;"
     "echo 'Backup Failed (Error Code 208).'; exit 48",
     48, "ErrorCode 208: Device locked (MBErrorDomain/208)"},
    {"says the cause on its errors", "echo 'ERROR: no room' >&2; echo 'Backup Aborted.'; exit 255",
     255, "ERROR: no room"},
    {"tells at once what it would keep back", "(echo now; sleep 30) | tr x y", -SIGTERM, "now",
     true},
    {"tells a line before its end", "printf now; sleep 30", -SIGTERM, "now", true},
    {"a last line without end", "printf 'ERROR: cut' >&2; exit 255", 255, "ERROR: cut"},
    {"crashes", "echo about to; kill -SEGV $$", -SIGSEGV, "about to"},
    {"has signals as they come", "kill -PIPE $$; exit 9", -SIGPIPE, ""},
    {"asks, and gets no answer", "read word || exit 4", 4, ""},
    {"leaves a process behind that holds the pipes", "sleep 20 & echo left; exit 0", 0, "left"},
    {"ends when it is asked to", "trap 'exit 6' TERM; echo now; sleep 30 & wait", 6, "now", true},
    {"is ended", "echo now; sleep 30; exit 0", -SIGTERM, "now", true},
    {"is made to end", "trap '' TERM; echo now; while :; do sleep 0.1; done", -SIGKILL, "now",
     true},
    {"is ended in its flood", "while :; do echo flood; echo flood >&2; done", -SIGTERM, "flood",
     true},
};

TEST_F(HelperTasks, TellHowTheHelperEnded) {
    for (const auto& one : kEndCases) {
        SCOPED_TRACE(one.what);
        const auto [result, progress, took] = runScript(one.script, one.cancelled);
        EXPECT_EQ(result.startFailure, "");
        EXPECT_EQ(result.exitStatus.value_or(-result.signal.value_or(0)), one.exitStatus);
        EXPECT_NE(result.exitStatus.has_value(), result.signal.has_value());
        EXPECT_EQ(result.usefulLine, one.usefulLine);
        EXPECT_EQ(result.cancelled, one.cancelled);
        EXPECT_LT(took, 10s);
    }
}

TEST_F(HelperTasks, FindThePercentInTheirLines) {
    const std::pair<const char*, int> cases[] = {
        {"50% done", 50},     {"[===] 7%", 7},       {"100%", 100}, {"%", -1},   {"none", -1},
        {"a%b 12% c% d", -1}, {"99999999999%", 100}, {"-5%", 5},    {"5 %", -1}, {"0%", 0}};
    for (const auto& [line, percent] : cases) {
        SCOPED_TRACE(line);
        const Outcome outcome = run({"printf", "%s", line});
        ASSERT_EQ(outcome.progress.size(), 1U);
        EXPECT_EQ(outcome.progress[0].percent, percent);
        EXPECT_EQ(outcome.progress[0].line, line);
    }
}

TEST_F(HelperTasks, KeepNothingOfAFloodButItsLastLine) {
    const Outcome outcome = runScript(
        "head -c 8000000 /dev/zero | tr '\\0' x\n"
        "yes 'line 42%' | head -n 400000 & yes other | head -n 400000 >&2; wait\n"
        "head -c 3000000 /dev/zero | tr '\\0' y >&2; exit 7");
    EXPECT_EQ(outcome.result.exitStatus, 7);
    EXPECT_EQ(outcome.result.usefulLine, std::string(HelperProgress::kMaxLine, 'y'));
    EXPECT_EQ(outcome.progress.back().percent, 42);
    const auto tenths = static_cast<std::size_t>(outcome.took / 100ms);
    EXPECT_LE(outcome.progress.size(), tenths + 2) << "ten reports a second";
}

TEST_F(HelperTasks, NameTheProgramThatCannotBeStarted) {
    writeWholeFile(folder / "plain", "no program");
    const struct {
        std::vector<std::string> words;
        std::string failure;
    } cases[] = {{{"salvor-no-such-program", "x"}, "salvor-no-such-program: No such file"},
                 {{folder / "plain"}, (folder / "plain").string() + ": Permission denied"},
                 {{}, "no program: Invalid"},
                 {{""}, ": No such file"}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.failure);
        const Outcome outcome = run(one.words);
        EXPECT_THAT(outcome.result.startFailure, HasSubstr(one.failure));
        EXPECT_EQ(outcome.result.exitStatus, std::nullopt);
    }
}

/// Whether a process is gone within a few seconds. One that has ended may stay in the list, without
/// its words, until somebody asks for it.
bool endsSoon(const std::string& pid) {
    const auto until = std::chrono::steady_clock::now() + 5s;
    while (std::chrono::steady_clock::now() < until) {
        std::string words;
        if (!std::getline(std::ifstream("/proc/" + pid + "/cmdline"), words)) return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

TEST_F(HelperTasks, LeaveNoProcessBehind) {
    const std::string leaves = "trap '' TERM HUP; sleep 600 >/dev/null 2>&1 & echo $!";
    const std::pair<const char*, bool> cases[] = {
        {"; exit 3", false}, {"; kill -KILL $$", false}, {"; trap 'exit 3' TERM; wait", true}};
    for (const auto& [end, cancels] : cases) {
        SCOPED_TRACE(end);
        const Outcome outcome = runScript(leaves + end, cancels);
        const std::string& pid = outcome.result.usefulLine;
        ASSERT_NE(pid, "");
        EXPECT_TRUE(endsSoon(pid)) << pid;
    }
}

}  // namespace
}  // namespace salvor
