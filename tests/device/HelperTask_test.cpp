#include "device/HelperTask.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <future>
#include <gmock/gmock.h>

#include "device/BackupFolderBridge.h"
#include "device/BackupHelper.h"
#include "tests/support/Digest.h"
#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::ElementsAre;
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

    fs::path script(const std::string& text) {
        const fs::path file = folder / "helper";
        writeWholeFile(file, "#!/bin/sh\n" + text + '\n');
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }

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

    TempFolder folder;
};

struct EndCase {
    const char* what;
    const char* script;
    std::optional<int> exitStatus;
    std::optional<int> signal;
    const char* lastError;
};

const EndCase kEndCases[] = {
    {"done", "echo 100% done", 0, {}, "100% done"},
    {"refused", "echo locked; exit 1", 1, {}, "locked"},
    {"failed, and says why last",
     "echo 3%; echo first >&2; printf 'ERROR: no device\\n\\n' >&2; exit 255",
     255,
     {},
     "ERROR: no device"},
    {"a last line without end", "printf 'ERROR: cut' >&2; exit 2", 2, {}, "ERROR: cut"},
    {"says nothing", "exit 3", 3, {}, ""},
    {"crashes", "echo about to; kill -SEGV $$", {}, SIGSEGV, "about to"},
    {"is killed", "kill -KILL $$", {}, SIGKILL, ""},
    {"has signals as they come", "kill -PIPE $$; exit 9", {}, SIGPIPE, ""},
    {"asks, and gets no answer", "read word || exit 4", 4, {}, ""},
    {"leaves a process behind that holds the pipes", "sleep 20 & echo left; exit 0", 0, {}, "left"},
};

TEST_F(HelperTasks, TellHowTheHelperEnded) {
    for (const auto& one : kEndCases) {
        SCOPED_TRACE(one.what);
        const Outcome outcome = run({script(one.script)});
        EXPECT_EQ(outcome.result.startFailure, "");
        EXPECT_EQ(outcome.result.exitStatus, one.exitStatus);
        EXPECT_EQ(outcome.result.signal, one.signal);
        EXPECT_EQ(outcome.result.lastError, one.lastError);
        EXPECT_FALSE(outcome.result.cancelled);
        EXPECT_LT(outcome.took, 10s);
    }
}

TEST_F(HelperTasks, WriteTheFolderAndTellHowFarTheyAre) {
    const auto helper = script(
        "mkdir -p \"$2/$1\"; echo Started > /dev/stderr\n"
        "for n in 10 55 100; do printf '\\r[==   ] %s%% Finished' $n; sleep 0.2; done\n"
        "echo; echo '<plist/>' > \"$2/$1/Info.plist\"; echo 'Backup Successful.'");
    BackupHelper setting{{helper.string(), "{target}", "{folder}"}};
    const Outcome outcome = run(setting.wordsFor("ABCDEF", folder.path()));
    EXPECT_EQ(outcome.result.exitStatus, 0);
    EXPECT_EQ(outcome.result.lastError, "Started");
    EXPECT_TRUE(fs::exists(folder / "abcdef" / "Info.plist"));
    std::vector<int> percents;
    for (const auto& one : outcome.progress) {
        if (percents.empty() || percents.back() != one.percent) percents.push_back(one.percent);
    }
    EXPECT_THAT(percents, ElementsAre(-1, 10, 55, 100));
    EXPECT_EQ(outcome.progress.back().line, "Backup Successful.");
}

TEST_F(HelperTasks, FindThePercentInTheirLines) {
    const std::pair<const char*, int> cases[] = {
        {"50% done", 50},     {"[===] 7%", 7},       {"100%", 100}, {"%", -1},   {"none", -1},
        {"a%b 12% c% d", -1}, {"99999999999%", 100}, {"-5%", 5},    {"5 %", -1}, {"0%", 0}};
    for (const auto& [line, percent] : cases) {
        SCOPED_TRACE(line);
        writeWholeFile(folder / "line", line);
        const Outcome outcome = run({"cat", folder / "line"});
        ASSERT_EQ(outcome.progress.size(), 1U);
        EXPECT_EQ(outcome.progress[0].percent, percent);
        EXPECT_EQ(outcome.progress[0].line, line);
    }
}

TEST_F(HelperTasks, EndWhenTheyAreCancelled) {
    const std::pair<const char*, int> cases[] = {
        {"echo now; exec sleep 30", SIGTERM},
        {"trap '' TERM; echo now; while :; do sleep 0.1; done", SIGKILL},
        {"echo now; while :; do echo flood; echo flood >&2; done", SIGTERM},
        {"echo now; sleep 30; exit 0", SIGTERM}};
    for (const auto& [text, signal] : cases) {
        SCOPED_TRACE(text);
        const Outcome outcome = run({script(text)}, true);
        EXPECT_TRUE(outcome.result.cancelled);
        EXPECT_EQ(outcome.result.signal, signal);
        EXPECT_LT(outcome.took, 8s);
    }
    const Outcome polite = run({script("trap 'exit 6' TERM; echo now; sleep 30 & wait")}, true);
    EXPECT_TRUE(polite.result.cancelled);
    EXPECT_EQ(polite.result.exitStatus, 6);
}

TEST_F(HelperTasks, EndWithTheObject) {
    const auto begin = std::chrono::steady_clock::now();
    std::promise<HelperResult> ended;
    {
        const HelperTask task({"sleep", "30"}, nullptr,
                              [&](const HelperResult& result) { ended.set_value(result); });
    }
    EXPECT_TRUE(ended.get_future().get().cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 8s);
}

TEST_F(HelperTasks, KeepNothingOfAFloodButItsLastLine) {
    const Outcome outcome =
        run({script("head -c 8000000 /dev/zero | tr '\\0' x\n"
                    "yes 'line 42%' | head -n 400000 & yes error | head -n 400000 >&2; wait\n"
                    "head -c 3000000 /dev/zero | tr '\\0' y >&2; exit 7")});
    EXPECT_EQ(outcome.result.exitStatus, 7);
    EXPECT_EQ(outcome.result.lastError, std::string(HelperProgress::kMaxLine, 'y'));
    EXPECT_EQ(outcome.progress.back().percent, 42);
    const auto tenths = static_cast<std::size_t>(outcome.took / 100ms);
    EXPECT_LE(outcome.progress.size(), tenths + 2) << "ten reports a second";
}

TEST_F(HelperTasks, NameTheProgramThatCannotBeStarted) {
    writeWholeFile(folder / "plain", "no program");
    fs::permissions(folder / "plain", fs::perms::owner_read);
    const struct {
        std::vector<std::string> words;
        std::string names;
        const char* cause;
    } cases[] = {{{"salvor-no-such-program", "x"}, "salvor-no-such-program", "No such file"},
                 {{folder / "none"}, folder / "none", "No such file"},
                 {{folder / "plain"}, folder / "plain", "Permission denied"},
                 {{}, "no program", "Invalid"},
                 {{""}, "", "No such file"}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.names);
        const Outcome outcome = run(one.words);
        EXPECT_THAT(outcome.result.startFailure, HasSubstr(one.names));
        EXPECT_THAT(outcome.result.startFailure, HasSubstr(one.cause));
        EXPECT_EQ(outcome.result.exitStatus, std::nullopt);
    }
}

TEST(BackupHelperSetting, IsWordsWithPlaces) {
    const BackupHelper usual;
    EXPECT_THAT(usual.wordsFor("AbC", "/b"),
                ElementsAre("idevicebackup2", "--udid", "AbC", "backup", "/b"));
    const auto own = BackupHelper::parse("  prog\t{target} {udid}  x{udid} {folder} {other}\n");
    ASSERT_TRUE(own);
    EXPECT_THAT(own->wordsFor("{folder}", "/with blank"),
                ElementsAre("prog", "{folder}", "{folder}", "x{udid}", "/with blank", "{other}"));
    for (const char* nothing : {"", " ", "\t\n "})
        EXPECT_FALSE(BackupHelper::parse(nothing)) << '"' << nothing << '"';
}

/// Whether a process runs; one that has ended may stay in the list until somebody asks for it.
bool runs(const std::string& pid) {
    std::ifstream file("/proc/" + pid + "/stat");
    std::string words((std::istreambuf_iterator<char>(file)), {});
    const auto name = words.rfind(')');
    return name != std::string::npos && words.compare(name, 3, ") Z") != 0;
}

bool endsSoon(const std::string& pid) {
    const auto until = std::chrono::steady_clock::now() + 5s;
    while (runs(pid) && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(5ms);
    return !runs(pid);
}

TEST_F(HelperTasks, LeaveNoProcessBehind) {
    const std::string pidFile = folder / "pid";
    const std::string leaves = "trap '' TERM HUP; sleep 600 & echo $! > " + pidFile + "; echo now";
    const std::pair<std::string, bool> cases[] = {{leaves + "; exit 3", false},
                                                  {leaves + "; kill -KILL $$", false},
                                                  {leaves + "; trap 'exit 3' TERM; wait", true}};
    for (const auto& [text, cancels] : cases) {
        SCOPED_TRACE(text);
        const Outcome outcome = run({script(text)}, cancels);
        EXPECT_EQ(outcome.result.cancelled, cancels);
        std::string pid;
        std::ifstream(pidFile) >> pid;
        ASSERT_NE(pid, "");
        EXPECT_TRUE(endsSoon(pid));
        fs::remove(pidFile);
    }
}

TEST_F(HelperTasks, AllEndAtOnce) {
    ChildProcess first({"sleep", "600"});
    ChildProcess second({script("trap '' TERM; while :; do sleep 1; done")});
    ChildProcess done({"true"});
    while (!done.ended()) std::this_thread::sleep_for(1ms);
    ChildProcess::endAll();
    for (auto* one : {&first, &second}) {
        const auto until = std::chrono::steady_clock::now() + 5s;
        while (!one->ended() && std::chrono::steady_clock::now() < until)
            std::this_thread::sleep_for(1ms);
        ASSERT_TRUE(one->ended());
        EXPECT_EQ(one->ended()->signal, SIGKILL);
    }
}

struct FolderCase {
    const char* what;
    std::vector<const char*> files;
    const char* expected;
    const char* udid = "ABCdef";
};

const FolderCase kFolderCases[] = {
    {"none yet", {}, "abcdef"},
    {"in lower case", {"abcdef/Info.plist"}, "abcdef"},
    {"in its own letters", {"ABCdef/Manifest.plist"}, "ABCdef"},
    {"both, the lower case first", {"ABCdef/Info.plist", "abcdef/Info.plist"}, "abcdef"},
    {"both, one without lists", {"ABCdef/Info.plist", "abcdef/x"}, "ABCdef"},
    {"a level deeper", {"abcdef/ABCDEF/Info.plist"}, "abcdef/ABCDEF"},
    {"a level deeper below its own letters", {"ABCdef/abcdef/Info.plist"}, "ABCdef/abcdef"},
    {"begun, without lists", {"ABCdef/Status.plist"}, "ABCdef"},
    {"no folder", {"ABCdef"}, "abcdef"},
    {"another device's", {"abcdefg/Info.plist", "abcde/Info.plist"}, "abcdef"},
    {"an identifier that leads elsewhere", {}, ".._.._etc", "../../etc"},
    {"an identifier that is a path", {}, "_etc", "/etc"},
    {"an identifier of dots", {}, "__", ".."},
};

TEST(BackupFolders, AreFoundWhereTheHelperPutsThem) {
    for (const auto& one : kFolderCases) {
        SCOPED_TRACE(one.what);
        const TempFolder root;
        for (const char* file : one.files) {
            fs::create_directories((root / file).parent_path());
            writeWholeFile(root / file, "x");
        }
        EXPECT_EQ(folderOfDeviceBackup(root.path(), one.udid), root / one.expected);
    }
    for (const char* name : {"ABCdef", "00008020-001D2D88ABCDEF01", "a b", "..."})
        EXPECT_TRUE(namesFolder(name)) << name;
    for (const char* name : {"", ".", "..", "../x", "/etc", "a/b"})
        EXPECT_FALSE(namesFolder(name)) << name;
    EXPECT_EQ(folderOfDeviceBackup("/no/such/root", "ABC"), fs::path("/no/such/root/abc"));
}

}  // namespace
}  // namespace salvor
