#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/cli/CommandLine.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class ScanCommandTest : public testing::Test {
  protected:
    SampleBackup writeSample(SampleOptions options = {}) const {
        options.messages = 60;
        return SampleBackup::write(backup(), options);
    }
    std::string backup() const { return folder_ / "backup"; }
    std::string out() const { return folder_ / "out"; }

    /// A scan with the project's own signatures.
    CommandLine scan(std::vector<std::string> more) const {
        more.insert(more.begin(), {"scan", backup(), "--signatures",
                                   SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml"});
        return runSalvor(more);
    }

    /// The lines of the one exported file of this name, without their serial column.
    std::vector<std::string> exportedRows(const std::string& name) const {
        std::vector<std::string> rows;
        for (const auto& entry : fs::recursive_directory_iterator(out())) {
            if (entry.path().filename() != name) continue;
            std::istringstream lines(readWholeFile(entry.path()));
            for (std::string line; std::getline(lines, line);)
                rows.push_back(line.substr(line.find(',')));
        }
        return rows;
    }

    TempFolder folder_;
};

TEST_F(ScanCommandTest, ListsAndExportsAndLeavesTheBackupAsItWas) {
    const auto sample = writeSample();
    const auto before = hashTree(backup());
    const auto ran = scan({"--export", out(), "--suffix", ".txt"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(hashTree(backup()), before);

    std::istringstream lines(ran.out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "Category           Live  Deleted");
    std::getline(lines, line);
    const auto live = SampleTruth::of(sample.truth.live, "message").size();
    EXPECT_THAT(line, StartsWith(fmt::format("Messages             {}  ", live)));
    for (int categories = 1; categories < 8; ++categories) std::getline(lines, line);
    EXPECT_THAT(line, StartsWith("Calendar"));
    std::getline(lines, line);
    EXPECT_THAT(line, StartsWith(out() + "/" + sample.truth.deviceName + " - "));
    EXPECT_TRUE(fs::is_regular_file(line + "/SMS.txt"));
    EXPECT_FALSE(std::getline(lines, line));

    EXPECT_THAT(ran.err, HasSubstr("Recovering deleted data. Please wait...\n"));
    EXPECT_THAT(ran.err, HasSubstr("Done after "));
}

TEST_F(ScanCommandTest, JsonOnStandardOutputStandsAlone) {
    const auto sample = writeSample();
    const auto ran = scan({"--json", "-", "--category", "messages", "--ios", "7.6"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    const auto report = json::parse(ran.out);
    EXPECT_EQ(report["device"]["iOSMinorVersion"], 6);
    EXPECT_THAT(report["live"]["SMSContent"],
                SizeIs(SampleTruth::of(sample.truth.live, "message").size()));
    EXPECT_THAT(ran.err, HasSubstr("\nMessages "));
    EXPECT_THAT(ran.err, Not(HasSubstr("\nCalls ")));
}

TEST_F(ScanCommandTest, QuietWritesFilesAndTellsErrorsOnly) {
    writeSample();
    const auto file = folder_ / "result.json";
    writeWholeFile(file, "an older result");
    const auto ran = scan({"--quiet", "--json", file, "--export", out()});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out + ran.err, "");
    EXPECT_TRUE(json::parse(readWholeFile(file)).contains("deleted"));
    EXPECT_FALSE(exportedRows("SMS.csv").empty());

    writeWholeFile(file, "no signatures");
    const auto broken = runSalvor({"scan", backup(), "--quiet", "--signatures", file});
    EXPECT_EQ(broken.status, 0) << "but nothing deleted can be found";
    EXPECT_THAT(broken.err, StartsWith("salvor: error: signatures file " + file.string()));
}

TEST_F(ScanCommandTest, TickedRowsAloneAreExported) {
    writeSample();
    ASSERT_EQ(scan({"--export", out()}).status, 0);
    const auto all = exportedRows("SMS.csv");
    fs::remove_all(out());
    const auto ticked = folder_ / "ticked.json";
    writeWholeFile(ticked, R"({"messages": [3, 2, 2, 999999], "3": []})");
    const auto ran = scan({"--export", out(), "--ticked", ticked});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(exportedRows("SMS.csv"), (std::vector{all[1], all[2]}));
}

TEST_F(ScanCommandTest, WhatCouldNotBeReadIsSaidAndHasAStatusThatOthersComeBefore) {
    const std::string told = "salvor: error: Messages: HomeDomain Library/SMS/sms.db (stored as ";
    for (const bool encrypted : {false, true}) {
        writeSample({.encrypted = encrypted});
        writeWholeFile(folder_ / "backup/3d0d7e5fb2ce288813306e4d4636395e047a3d28",
                       std::string(5000, 'x'));
        const auto ran = scan({});
        EXPECT_EQ(ran.status, encrypted ? 4 : 7);
        EXPECT_THAT(ran.out, HasSubstr("\nMessages              0        0  unreadable\nPhotos "));
        EXPECT_THAT(ran.out, Not(HasSubstr(" \n")));
        EXPECT_THAT(ran.err, HasSubstr(told));
        const auto quiet = scan({"--quiet", "--json", "/dev/full"});
        EXPECT_EQ(quiet.status, encrypted ? 4 : 5);
        EXPECT_THAT(quiet.err, StartsWith(told));
        EXPECT_EQ(scan({"--category", "calls"}).status, encrypted ? 4 : 0);
    }
}

TEST_F(ScanCommandTest, AnEncryptedBackupIsSaidToBeOne) {
    writeSample({.encrypted = true});
    const auto ran = scan({});
    EXPECT_EQ(ran.status, 4);
    EXPECT_THAT(ran.out, HasSubstr("\nMessages "));
    EXPECT_THAT(ran.err, HasSubstr("\nsalvor: error: " + backup() + ": the manifest says that"));
}

TEST_F(ScanCommandTest, ABackupWhoseIndexIsADatabaseIsScannedAndSaidToHaveOne) {
    writeSample({.nested = true});
    fs::rename(folder_ / "backup/Manifest.mbdb", folder_ / "backup/Manifest.db");
    const auto ran = scan({"--category", "messages"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.out, Not(HasSubstr("Messages      0")));
    EXPECT_THAT(ran.err,
                HasSubstr("/Manifest.db: this index is a database, which is not read yet"));
    const auto index = runSalvor({"index", backup()});
    EXPECT_EQ(index.status, 3);
    EXPECT_THAT(index.err, HasSubstr("its index, Manifest.db, is a database"));
}

/// Standard error that presses Ctrl-C when a text has been written.
class InterruptingBuffer : public std::stringbuf {
  public:
    explicit InterruptingBuffer(std::string moment) : moment_(std::move(moment)) {}

  protected:
    int sync() override {
        if (pressed_ || str().find(moment_) == std::string::npos) return 0;
        pressed_ = true;
        std::raise(SIGINT);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));  // it arrives on a thread
        return 0;
    }

  private:
    std::string moment_;
    bool pressed_ = false;
};

TEST_F(ScanCommandTest, AnInterruptEndsTheScanOrTheExportAndTheRestIsShown) {
    writeSample({.encrypted = true});  // which an interrupt comes before
    for (const bool inExport : {false, true}) {
        fs::remove_all(out());
        std::ostringstream outStream;
        InterruptingBuffer buffer(inExport ? "\nDone after " : "SMS Retreived");
        std::ostream err(&buffer);
        EXPECT_EQ(run({"scan", backup(), "--export", out()}, outStream, err), 130);
        EXPECT_THAT(outStream.str(), StartsWith("Category "));
        EXPECT_THAT(outStream.str(), HasSubstr("\n" + out()));
        EXPECT_THAT(buffer.str(), HasSubstr(inExport ? ": the export was cancelled after 0 files"
                                                     : "\nCancelled after "));
        EXPECT_EQ(exportedRows("SMS.csv").empty(), inExport);
    }
}

}  // namespace
}  // namespace salvor::cli
