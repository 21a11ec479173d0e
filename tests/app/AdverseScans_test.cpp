#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "app/ScanJob.h"
#include "export/ScanReport.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

/// Does something to the backup when a status appears.
class Saboteur : public ScanObserver {
  public:
    std::string moment;
    std::function<void()> act;
    void onStatus(int, const std::string& text) override {
        if (text == moment) act();
    }
};

class AdverseScans : public testing::Test {
  protected:
    AdverseScans() {
        SampleOptions options;
        options.messages = 40;
        sample = SampleBackup::write(folder / "backup", options);
    }

    ScanRequest request() const {
        ScanRequest made;
        made.source = sample.folder;
        made.signatures = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";
        return made;
    }

    std::string report() const {
        ScanObserver nobody;
        ScanJob job(nobody);
        EXPECT_EQ(job.runScan(request()).result, ScanResult::Done);
        return ScanReport::text(job.state());
    }

    /// A report without what differs between equal scans: the copies of pictures lie in work
    /// folders of their own, and two workers tell at the same time that they begin.
    static std::string lists(const std::string& report) {
        const auto deleted = report.find("\"DeletedSMS\": [");
        return report.substr(0, report.find("\"Photos\": [")) +
               report.substr(deleted, report.find("\"status\": [") - deleted);
    }

    TempFolder folder;
    SampleBackup sample;
};

TEST_F(AdverseScans, EightAtOnceGiveEqualResults) {
    const std::string alone = lists(report());
    std::vector<std::string> reports(8);
    {
        std::vector<std::jthread> scans;
        for (auto& one : reports) scans.emplace_back([&] { one = report(); });
    }
    for (const auto& one : reports) EXPECT_TRUE(lists(one) == alone);
}

TEST_F(AdverseScans, ABackupThatIsRemovedMeanwhileKeepsWhatWasRead) {
    for (const char* moment : {"Contacts", "Calendar", "Recovering deleted data. Please wait..."}) {
        SCOPED_TRACE(moment);
        sample = SampleBackup::write(folder / moment);
        Saboteur saboteur;
        saboteur.moment = moment;
        saboteur.act = [this] { fs::remove_all(sample.folder); };
        ScanJob job(saboteur);
        EXPECT_EQ(job.runScan(request()).result, ScanResult::Done);
        EXPECT_EQ(job.state().SMSContent.size(),
                  SampleTruth::of(sample.truth.live, "message").size());
        EXPECT_FALSE(fs::exists(sample.folder));
    }
}

TEST_F(AdverseScans, FilesThatShrinkMeanwhileEndNothing) {
    Saboteur saboteur;
    saboteur.moment = "Recovering deleted data. Please wait...";
    saboteur.act = [this] {
        for (const auto& entry : fs::directory_iterator(sample.folder)) {
            if (entry.is_regular_file()) fs::resize_file(entry.path(), 100);
        }
    };
    ScanJob job(saboteur);
    EXPECT_EQ(job.runScan(request()).result, ScanResult::Done);
    EXPECT_FALSE(job.state().SMSContent.empty());
}

TEST_F(AdverseScans, WhatIsNoFileIsPassedOver) {
    const fs::path file = sample.file("HomeDomain", "Library/Calendar/Calendar.sqlitedb");
    const std::vector<std::function<void()>> makers{
        [&] { fs::create_directory(file); },
        [&] { fs::create_symlink("nowhere", file); },
        [&] { fs::create_symlink(file.filename(), file); },
        [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); },
        [&] { fs::create_symlink("/dev/zero", file); },
    };
    for (const auto& make : makers) {
        fs::remove_all(file);
        make();
        ScanObserver nobody;
        ScanJob job(nobody);
        EXPECT_EQ(job.runScan(request()).result, ScanResult::Done);
        EXPECT_TRUE(job.state().CalendarContent.empty());
        EXPECT_FALSE(job.state().NotesContent.empty());
    }
}

}  // namespace
}  // namespace salvor
