#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "app/FreshBackup.h"
#include "tests/cli/CommandLine.h"
#include "tests/support/HashTree.h"
#include "tests/support/MuxDaemon.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

constexpr auto kUdid = "00008020-001D2D88ABCDEF01";
constexpr std::chrono::milliseconds kMoment{5};

/// The program beside a multiplexer daemon with a telephone behind it.
class DeviceCommands : public testing::Test {
  protected:
    static std::shared_ptr<StandInDevice> telephone(const std::string& udid,
                                                    const std::string& name) {
        auto made = std::make_shared<StandInDevice>(udid, name);
        made->values["ProductType"] = "iPhone5,1";
        made->values["ProductVersion"] = "7.1.2";
        return made;
    }
    void plugIn() { daemon.plugIn(1, phone); }
    /// The words of a backup by a script that finds the identifier in $1 and the folder in $2.
    std::vector<std::string> backup(const std::string& script, const std::string& udid = kUdid,
                                    const std::vector<std::string>& more = {}) {
        writeWholeFile(folder / "helper", script);
        const auto helper = fmt::format("sh {} {{udid}} {{folder}}", (folder / "helper").string());
        std::vector<std::string> words{"backup", udid, "--root", root.string(), "--helper", helper};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    CommandLine runBackup(const std::string& script, const std::vector<std::string>& more = {}) {
        return runSalvor(backup(script, kUdid, more));
    }

    TempFolder folder;
    fs::path root = folder / "backups";
    MuxDaemon daemon;
    std::shared_ptr<StandInDevice> phone = telephone(kUdid, "Anna's iPhone");
};

TEST_F(DeviceCommands, SayWhenNoDaemonRuns) {
    daemon.stop();
    for (const auto& words : {std::vector<std::string>{"devices"}, backup("exit 0")}) {
        const auto run = runSalvor(words);
        EXPECT_EQ(run.status, 6);
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, HasSubstr("no multiplexer daemon answers there; install and start"));
    }
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(DeviceCommands, ListWhatIsConnected) {
    auto run = runSalvor({"devices"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "No device is connected.\n");
    EXPECT_EQ(runSalvor({"devices", "--json"}).out, "[]\n");

    plugIn();
    run = runSalvor({"devices"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "Device         Type       iOS    Identifier\n"
              "Anna's iPhone  iPhone5,1  7.1.2  00008020-001D2D88ABCDEF01\n");
    EXPECT_EQ(nlohmann::json::parse(runSalvor({"devices", "--json"}).out),
              nlohmann::json::parse(R"([{"DeviceName": "Anna's iPhone", "ProductType": "iPhone5,1",
                                         "UniqueDeviceID": "00008020-001D2D88ABCDEF01",
                                         "ProductVersion": "7.1.2"}])"));
}

TEST_F(DeviceCommands, TellWhatADeviceWants) {
    phone->errors["StartSession"] = "PasswordProtected";
    plugIn();
    auto run = runSalvor({"devices"});
    EXPECT_EQ(run.status, 6);
    EXPECT_THAT(run.out, HasSubstr("Anna's iPhone  -"));
    EXPECT_THAT(run.err,
                HasSubstr("Anna's iPhone (00008020-001D2D88ABCDEF01): the device is locked "
                          "with its passcode; unlock it"));
    run = runBackup("exit 0");
    EXPECT_EQ(run.status, 6);
    EXPECT_THAT(run.err, HasSubstr("locked with its passcode"));
    const auto tablet = telephone("ABCDEF", "Tablet");
    tablet->hostID = "";
    tablet->errors["Pair"] = "PairingDialogResponsePending";
    daemon.plugIn(2, tablet);
    run = runSalvor({"devices"});
    EXPECT_EQ(run.status, 6);
    EXPECT_THAT(run.err,
                HasSubstr("Tablet (ABCDEF): the device asks whether this computer is to be "
                          "trusted; unlock it, confirm"));
}

TEST_F(DeviceCommands, TellWhatOneIsToKnow) {
    const auto wireless = telephone("feed", "Wireless");
    wireless->connection = "Network";
    daemon.plugIn(2, wireless);
    const std::string advice =
        "feed: the device is reached over the network alone; plug it in at a USB port\n";
    auto run = runSalvor({"devices"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "No device is connected.\nsalvor: warning: " + advice);
    run = runSalvor(backup("exit 0", "FEED"));
    EXPECT_EQ(run.status, 6);
    EXPECT_EQ(run.err, "salvor: error: FEED" + advice.substr(4));

    phone->values["com.apple.mobile.backup/WillEncrypt"] = "true";
    plugIn();
    run = runBackup("mkdir $2/$1");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.err, StartsWith("salvor: warning: Anna's iPhone (00008020-001D2D88ABCDEF01) "
                                    "encrypts its backups, and"));
}

TEST_F(DeviceCommands, TellHowABackupEnded) {
    plugIn();
    const struct {
        const char* script;
        int status;
        bool namesTheFolder;
        const char* error;
    } cases[] = {
        {"echo 'no room'", 6, false,
         "abcdef01: no backup was written there: its helper ended with status 0 (no room)\n"},
        {"mkdir $2/$1; touch $2/$1/Info.plist; printf '10%%\\r55%%\\r100%%\\n'", 0, true,
         "Backing up: 100 %\n"},
        {"echo 'No space left' >&2; exit 255", 6, false,
         ": the backup may not be whole: its helper ended with status 255 (No space left)\n"},
        {"echo 'ErrorCode 208: Device locked'; echo 'Backup Failed (Error Code 208).'; exit 48", 6,
         false, "is upto date. (ErrorCode 208: Device locked)\n"},
    };
    for (const char* script : {"exit 0", "mkdir $2/$1; touch $2/$1/Info.plist; exit 255"}) {
        const auto unscanned = runBackup(script, {"--scan"});
        EXPECT_EQ(unscanned.status, 6);
        EXPECT_EQ(unscanned.out, "");
        fs::remove_all(root);
    }
    for (const auto& one : cases) {
        SCOPED_TRACE(one.script);
        const auto run = runBackup(one.script);
        EXPECT_EQ(run.status, one.status);
        EXPECT_EQ(run.out, one.namesTheFolder ? (root / kUdid).string() + '\n' : "");
        EXPECT_THAT(run.err, HasSubstr(one.error));
        EXPECT_THAT(run.err, StartsWith("Making a backup of Anna's iPhone below "));
        EXPECT_EQ(run.err.find("Scan it with") != std::string::npos, one.namesTheFolder);
    }
    const auto refused = runBackup("exit 1", {"--quiet"});
    EXPECT_EQ(refused.err, "salvor: error: " + std::string(kPasscodeQuestion) + '\n');
}

TEST_F(DeviceCommands, TellWhichDeviceWasUnplugged) {
    for (const bool own : {false, true}) {
        SCOPED_TRACE(own);
        plugIn();
        daemon.plugIn(2, telephone("feed", "Tablet"));
        const std::jthread person([this, own] {
            while (!fs::exists(root / "begun")) std::this_thread::sleep_for(kMoment);
            daemon.pullOut(own ? 1 : 2);
            writeWholeFile(root / "pulled", "");
        });
        const auto run =
            runBackup(fmt::format("mkdir -p $2/$1; touch $2/$1/Info.plist $2/begun\n"
                                  "until [ -e $2/pulled ]; do sleep 0.02; done; sleep 0.7; rm "
                                  "$2/begun $2/pulled; exit {}",
                                  own ? 255 : 0));
        EXPECT_EQ(run.status, own ? 6 : 0);
        const char* cause = "the backup may not be whole: Anna's iPhone was unplugged\n";
        EXPECT_EQ(run.err.find(cause) != std::string::npos, own) << run.err;
    }
}

TEST_F(DeviceCommands, SayWhatABackupLacks) {
    plugIn();
    daemon.plugIn(2, telephone("../x", "Odd"));
    writeWholeFile(folder / "file", "");
    const std::string file = (folder / "file").string();
    const struct {
        std::vector<std::string> words;
        int status;
        std::string error;
    } cases[] = {
        {{"feed"}, 6, "salvor: error: feed: no such device is connected"},
        {{"../x", "--root", root}, 6, "Odd (../x): no folder can be named so"},
        {{kUdid, "--root", root, "--helper", "/no/helper"},
         6,
         "could not be started: /no/helper: No such file"},
        {{kUdid, "--helper", "  "}, 2, "--helper: names no program"},
        {{kUdid, "--export", file}, 2, "--export: belongs to a scan, so it needs --scan"},
        {{kUdid, "--root", file}, 6, file + ": no backup can be written there"},
        {{kUdid, "--root", file + "/below"}, 6, file + "/below: no backup can be written there"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.error);
        auto words = one.words;
        words.insert(words.begin(), "backup");
        const auto run = runSalvor(words);
        EXPECT_EQ(run.status, one.status);
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, HasSubstr(one.error));
    }
    EXPECT_FALSE(fs::exists(folder / "x"));
}

TEST_F(DeviceCommands, NameTheFolderForAShellAndNothingWhenQuiet) {
    const char* udid = "It's 1";
    daemon.plugIn(1, telephone(udid, "Odd"));
    auto words = backup("mkdir -p \"$2/$1\"", "it'S 1");
    auto run = runSalvor(words);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, (root / udid).string() + '\n');
    EXPECT_THAT(run.err, HasSubstr("salvor scan '" + root.string() + "/It'\\''s 1'\n"));
    words.push_back("--quiet");
    run = runSalvor(words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");

    root = folder / "\x1b[2J";
    for (const bool terminal : {false, true}) {
        std::ostringstream out;
        std::ostringstream err;
        Console console{out, err};
        console.outShown = terminal;
        EXPECT_EQ(salvor::cli::run(backup("mkdir -p \"$2/$1\"", udid), console), 0);
        EXPECT_EQ(out.str().find('\x1b') == std::string::npos, terminal) << "data stays as it is";
        EXPECT_EQ(err.str().find('\x1b'), std::string::npos);
    }
}

TEST_F(DeviceCommands, AskAtATerminalWhetherToTryAgain) {
    plugIn();
    int questions = 0;
    for (const bool again : {true, false}) {
        std::ostringstream out;
        std::ostringstream err;
        Console console{out, err};
        console.asks = true;
        console.enterPressed = [&] {
            ++questions;
            return again;
        };
        // Refuses the first time that it finds its mark missing.
        const int status =
            run(backup(again ? "mkdir -p $2/$1; [ -e $2/seen ] || { touch $2/seen; exit 1; }"
                             : "echo locked; exit 1"),
                console);
        EXPECT_EQ(status, again ? 0 : 6) << err.str();
        EXPECT_THAT(err.str(), HasSubstr(std::string(kPasscodeQuestion) +
                                         (again ? "\nPress Enter" : " (locked)\nPress Enter")));
    }
    EXPECT_EQ(questions, 2);
}

TEST_F(DeviceCommands, ScanTheFreshBackupAsTheDeviceDescribesItself) {
    phone->encrypted = true;
    plugIn();
    SampleOptions options;
    options.messages = 60;
    SampleBackup::write(folder / "sample", options);
    // Of an earlier backup a picture is left that the new one lacks.
    const auto script = fmt::format(
        "cp -r {0} $2/$1; cp -r {0} $2/00008020-001d2d88abcdef01-old; "
        "mv $2/$1/Manifest.mbdb $2/$1/Manifest.db",
        (folder / "sample").string());
    const auto run = runBackup(script, {"--scan", "--json", "-", "--signatures",
                                        SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto result = nlohmann::json::parse(run.out);
    EXPECT_EQ(result["device"]["DeviceName"], "Anna's iPhone");
    EXPECT_EQ(result["device"]["Connected"], true);
    EXPECT_EQ(result["device"]["iOSMajorVersion"], 7);
    EXPECT_EQ(result["source"]["backup"], (root / kUdid).string());
    EXPECT_GT(result["live"]["SMSContent"].size(), 0U);
    EXPECT_GT(result["deleted"]["DeletedPhotos"].size(), 0U);
    EXPECT_EQ(hashTree(root / kUdid).size(), hashTree(folder / "sample").size());
    const std::string notice = "Manifest.db: file is not a database";
    EXPECT_THAT(run.err, HasSubstr(notice));
    EXPECT_EQ(run.err.find(notice), run.err.rfind(notice)) << "once is enough";
    // Inside what is about to be written nothing else may be.
    const auto inside =
        runBackup(script, {"--scan", "--json", (root / kUdid / "result.json").string()});
    EXPECT_EQ(inside.status, 2);
}

TEST_F(DeviceCommands, EndTheHelperOnInterrupt) {
    plugIn();
    const struct {
        const char* helper;
        const char* kill;  ///< what the shell does to $salvor
        bool tells;
    } cases[] = {{"trap '' INT", "kill -INT $salvor", true},
                 {"trap '' INT", "kill -HUP $salvor", true},
                 // It does not heed being asked to end: the second interrupt takes it along.
                 {"trap '' INT TERM", "kill -INT $salvor; sleep 0.2; kill -INT $salvor", false}};
    // A shell without job control leaves SIGINT ignored in what it starts beside itself. What
    // nobody has waited for yet ("Z") has ended.
    constexpr auto kScript =
        "set -m; cd '{}'; rm -f backups/pid\n"
        "'{}/bin/salvor' backup {} --root backups --helper 'sh helper {{udid}} {{folder}}' "
        ">out 2>err &\n"
        "salvor=$!; until [ -s backups/pid ]; do sleep 0.02; done; {}; wait $salvor; status=$?\n"
        "sleep 0.1; case $(cat /proc/$(cat backups/pid)/stat 2>/dev/null) in\n"
        "''|*') Z '*) exit $status;; esac; exit 99\n";
    for (const auto& one : cases) {
        SCOPED_TRACE(one.kill);
        writeWholeFile(folder / "helper",
                       std::string(one.helper) + "; echo $$ >$2/pid; while :; do sleep 0.05; done");
        writeWholeFile(folder / "script", fmt::format(kScript, folder.path().string(),
                                                      SALVOR_BINARY_DIR, kUdid, one.kill));
        const int ended = std::system(("bash '" + (folder / "script").string() + "'").c_str());
        ASSERT_TRUE(WIFEXITED(ended));
        EXPECT_EQ(WEXITSTATUS(ended), 130);
        const bool told = readWholeFile(folder / "err").find("was cancelled") != std::string::npos;
        EXPECT_EQ(told, one.tells);
    }
}

/// Runs the program; how long it took in microseconds, from an interrupt on if there is one.
long timeOf(const std::string& words, bool interrupted, const fs::path& folder, int& status) {
    constexpr auto kScript =
        "set -m; cd {}; t=$EPOCHREALTIME; {}/bin/salvor {} >out 2>err &\n"
        "{} wait $!; s=$?; echo $((${{EPOCHREALTIME/./}} - ${{t/./}})) >took; exit $s";
    writeWholeFile(folder / "script",
                   fmt::format(kScript, folder.string(), SALVOR_BINARY_DIR, words,
                               interrupted ? "sleep 0.5; t=$EPOCHREALTIME; kill -INT $!;" : ""));
    const auto command = "LC_ALL=C bash " + (folder / "script").string() + " 2>/dev/null";
    status = WEXITSTATUS(std::system(command.c_str()));
    return std::stol(readWholeFile(folder / "took"));
}

TEST_F(DeviceCommands, EndSoonWhateverIsSilent) {
    constexpr long kSecond = 1'000'000;
    int status = 0;
    constexpr std::chrono::milliseconds kDrip{100};
    const struct {
        const char* what;
        std::string request;  ///< of the device; "" for the daemon
        DeviceFault fault;
    } cases[] = {{"daemon", "", {""}},
                 {"dripping daemon", "", {std::string(1000, ' '), false, {}, kDrip}},
                 {"device", "QueryType", {""}},
                 {"dripping device", "StartSession", {std::nullopt, false, {}, kDrip}},
                 {"pairing", "Pair", {""}}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        const auto silent = telephone(kUdid, "Silent");
        silent->faults[one.request] = one.fault;
        if (one.request == "Pair") silent->hostID = "";
        daemon.meetWith(one.request.empty() ? std::optional(one.fault) : std::nullopt);
        daemon.keepPairRecord(kUdid, "");
        daemon.plugIn(1, silent);
        for (const std::string words : {"devices", "backup 00008020-001D2D88ABCDEF01"}) {
            EXPECT_LT(timeOf(words, true, folder.path(), status), kSecond) << words;
            EXPECT_EQ(status, 130) << words;
        }
    }
    daemon.meetWith(DeviceFault{""});
    const long took = timeOf("devices", false, folder.path(), status);
    EXPECT_EQ(status, 6);
    EXPECT_EQ(took / kSecond, 5);
    EXPECT_THAT(readWholeFile(folder / "err"),
                HasSubstr("the multiplexer daemon does not answer; restart"));
}

}  // namespace
}  // namespace salvor::cli
