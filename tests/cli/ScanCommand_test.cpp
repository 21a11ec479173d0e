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
    EXPECT_EQ(fs::status(line).permissions(), fs::perms::owner_all);
    EXPECT_FALSE(std::getline(lines, line));

    EXPECT_THAT(ran.err, HasSubstr("Recovering deleted data. Please wait...\n"));
    EXPECT_THAT(ran.err, HasSubstr("\nExporting\nDone after "));
    EXPECT_EQ(ran.err.find('\n', ran.err.find("Done after ")), ran.err.size() - 1);
}

TEST_F(ScanCommandTest, CopiesNoPictureWithoutAWorkFolderAndTellsTheSameEachTime) {
    writeSample();
    ::setenv("XDG_CACHE_HOME", (folder_ / "cache").c_str(), 1);
    std::vector<std::string> reports;
    for (const char* name : {"a.json", "b.json"}) {
        ASSERT_EQ(scan({"--json", folder_ / name}).status, 0);
        auto report = json::parse(readWholeFile(folder_ / name));
        report.erase("scannedAt");
        reports.push_back(report.dump());
        EXPECT_EQ(fs::path(report["live"]["Photos"][0]["Location"]).parent_path(), backup());
        EXPECT_EQ(report["live"]["Photos"][0]["Name"], "IMG_1.JPG");
    }
    EXPECT_EQ(reports[0], reports[1]);
    EXPECT_EQ(fs::status(folder_ / "a.json").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(fs::exists(folder_ / "cache"));
    ::unsetenv("XDG_CACHE_HOME");
    ASSERT_EQ(scan({"--json", folder_ / "a.json", "--work", out()}).status, 0);
    const auto copied = json::parse(readWholeFile(folder_ / "a.json"))["live"]["Photos"][0];
    EXPECT_EQ(copied["Location"], out() + "/Temp/Photos/IMG_1.JPG");
    EXPECT_EQ(fs::status(out() + "/Temp").permissions(), fs::perms::owner_all);
}

TEST_F(ScanCommandTest, PicturesThatCannotBeReadOrHaveNoRoomAreSaid) {
    const auto sample = writeSample();
    const auto picture = sample.file("CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG");
    ASSERT_TRUE(fs::remove(picture));
    fs::create_directory(picture);
    auto ran = scan({"--quiet", "--export", out()});
    EXPECT_EQ(ran.status, 7);
    EXPECT_THAT(ran.err, HasSubstr("/IMG_0001.JPG: cannot read " + picture.string()));
    EXPECT_FALSE(exportedRows("SMS.csv").empty());

    fs::remove(picture);
    writeWholeFile(picture, "\xFF\xD8\xFF\xE0..JFIF" + std::string(20, '\0'));
    fs::resize_file(picture, std::uintmax_t{1} << 43);  // a hole
    for (const char* option : {"--export", "--work"}) {
        ran = scan({"--quiet", option, folder_ / "full"});
        EXPECT_EQ(ran.status, 5) << option;
        EXPECT_THAT(ran.err, HasSubstr(" TB ("));
        EXPECT_THAT(ran.err, HasSubstr(", but there are "));
    }
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
                HasSubstr("/Manifest.db: file is not a database; files are found by their"));
    const auto index = runSalvor({"index", backup()});
    EXPECT_EQ(index.status, 3);
    EXPECT_THAT(index.err, HasSubstr("its Manifest.db: file is not a database"));
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

TEST_F(ScanCommandTest, AnInterruptEndsTheScanOrTheSavingAndTheRestIsShown) {
    writeSample({.encrypted = true});  // which an interrupt comes before
    const auto file = folder_ / "result.json";
    const std::pair<const char*, const char*> cases[] = {
        {"SMS Retreived", ""},
        {"\nExporting\n", "M.part: the export was cancelled after 0 files\n"},
        {"\nWriting ", "result.json: not written, for it was cancelled\n"},
    };
    for (const auto& [moment, told] : cases) {
        SCOPED_TRACE(moment);
        fs::remove_all(out());
        fs::remove(file);
        std::ostringstream outStream;
        InterruptingBuffer buffer(moment);
        std::ostream err(&buffer);
        EXPECT_EQ(run({"scan", backup(), "--export", out(), "--json", file}, outStream, err), 130);
        EXPECT_THAT(outStream.str(), StartsWith("Category "));
        EXPECT_THAT(outStream.str(), HasSubstr("\n" + out()));
        EXPECT_THAT(buffer.str(), HasSubstr(told));
        EXPECT_THAT(buffer.str(), HasSubstr("\nCancelled after "));
        const bool inScan = *told == '\0';
        EXPECT_EQ(fs::exists(file), inScan);
        EXPECT_EQ(exportedRows("SMS.csv").empty(), moment == std::string("\nExporting\n"));
    }
}

}  // namespace
}  // namespace salvor::cli
