#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

#include "export/ScanReport.h"
#include "tests/app/SampleScan.h"
#include "tests/support/TempFolder.h"

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

    std::string report() const {
        SampleScan scan;
        EXPECT_EQ(scan.run(requestFor(sample.folder)), ScanResult::Done);
        return ScanReport::text(scan.state());
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

TEST_F(AdverseScans, WhatWasReadStaysWhenTheBackupIsRemovedOrShrinksMeanwhile) {
    const std::function<void()> remove = [this] { fs::remove_all(sample.folder); };
    const std::function<void()> shrink = [this] {
        for (const auto& entry : fs::directory_iterator(sample.folder)) {
            if (entry.is_regular_file()) fs::resize_file(entry.path(), 100);
        }
    };
    const char* recovery = "Recovering deleted data. Please wait...";
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"Contacts", remove}, {"Calendar", remove}, {recovery, remove}, {recovery, shrink}};
    for (const auto& [moment, act] : cases) {
        SCOPED_TRACE(moment);
        fs::remove_all(sample.folder);
        sample = SampleBackup::write(sample.folder);
        Saboteur saboteur;
        saboteur.moment = moment;
        saboteur.act = act;
        ScanJob job(saboteur);
        EXPECT_EQ(job.runScan(requestFor(sample.folder)).result, ScanResult::Done);
        EXPECT_EQ(job.state().SMSContent.size(),
                  SampleTruth::of(sample.truth.live, "message").size());
    }
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
        SampleScan scan;
        EXPECT_EQ(scan.run(requestFor(sample.folder)), ScanResult::Done);
        EXPECT_TRUE(scan.state().CalendarContent.empty());
        EXPECT_FALSE(scan.state().NotesContent.empty());
    }
}

}  // namespace
}  // namespace salvor
