#include "app/ScanJob.h"

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <sys/stat.h>
#include <thread>

#include "app/SalvorAppDelegate.h"
#include "report/ScanReport.h"
#include "services/DcimService.h"
#include "services/MessageServices.h"
#include "services/ServicesManager.h"
#include "services/WhatsAppService.h"
#include "services/contactServices.h"
#include "tests/app/SampleScan.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleRandom.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

/// Does something when a status appears.
class Watcher : public ScanObserver {
  public:
    std::string moment;
    std::function<void()> act;
    void onStatus(StatusCode, const std::string& text) override {
        if (text == moment) act();
    }
};

class ScanJobs : public testing::Test {
  protected:
    ScanRequest request(std::int32_t category = 0) const {
        auto made = requestFor(backup);
        made.category = category;
        made.workFolder = folder / "work";
        return made;
    }
    SampleBackup sample(SampleOptions options = {}) const {
        options.messages = 40;
        fs::remove_all(backup);
        return SampleBackup::write(backup, options);
    }
    ScanResult scan() const { return SampleScan().run(request()); }

    TempFolder folder;
    fs::path backup = folder / "backup";
    Watcher watcher;
    ScanJob job{watcher};
};

std::map<fs::path, std::int64_t> accessTimes(const fs::path& root) {
    std::map<fs::path, std::int64_t> times;
    // Listing a folder moves the folder's own time.
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        struct stat info {};
        EXPECT_EQ(::lstat(entry.path().c_str(), &info), 0);
        if (entry.is_regular_file()) times[entry.path()] = info.st_atim.tv_sec;
    }
    return times;
}

TEST_F(ScanJobs, LeaveTheBackupExactlyAsItWas) {
    for (const bool nested : {false, true}) {
        sample({.ios = nested ? 9 : 5, .nested = nested});
        // Older than the content, so that any plain read would move them.
        for (const auto& entry : fs::recursive_directory_iterator(backup)) {
            const timespec past[2] = {{1'000'000'000, 0}, {0, UTIME_OMIT}};
            ASSERT_EQ(::utimensat(AT_FDCWD, entry.path().c_str(), past, 0), 0);
        }
        const auto timesBefore = accessTimes(backup);
        EXPECT_EQ(scan(), ScanResult::Done);
        EXPECT_EQ(accessTimes(backup), timesBefore);

        const auto before = hashTree(backup);
        EXPECT_EQ(scan(), ScanResult::Done);
        EXPECT_EQ(hashTree(backup), before);
    }
}

// Folders with their thumbnails, partners, persons and counters are the services' own.
TEST_F(ScanJobs, KeepTheServicesUntilTheNextScan) {
    sample();
    ASSERT_EQ(job.runScan(request()).result, ScanResult::Done);
    const auto* services = job.application().servicesMgr();
    ASSERT_NE(services, nullptr);
    const auto& partners = dynamic_cast<const WhatsAppService&>(*services->whatsAppServ).partners();
    ASSERT_FALSE(partners.empty());
    EXPECT_EQ(partners[0]->ObservableCollection.at(0)->whatsAppContact.lock(), partners[0]);
    EXPECT_EQ(dynamic_cast<const contactServices&>(*services->contactServ).ContactsAll().size(),
              job.state().ContactContent.size());
    EXPECT_FALSE(
        dynamic_cast<const DcimService&>(*services->dcmiServ).folders().at(0).assets.empty());
    EXPECT_GT(services->messageServ->recovered(), 0);
    job.application().ExploreBackupDirectoryWithDataType({7, backup.string()});
    EXPECT_EQ(job.application().servicesMgr()->messageServ->recovered(), 0);
}

TEST_F(ScanJobs, TakeTheVersionThatThePersonNames) {
    sample({.ios = 8, .lockdownOnly = true});
    const struct {
        std::optional<std::string> wanted;
        int major;
        int minor;
        bool unknown;
    } cases[] = {{std::nullopt, 0, 0, true},
                 {"9", 9, 0, false},
                 {"7.1.2", 7, 1, false},
                 {"0.0", 0, 0, false},
                 {"auto", 8, 4, false}};
    for (const auto& [wanted, major, minor, unknown] : cases) {
        auto asked = request(codeOf(Category::Calendar));
        asked.ios = wanted;
        ScanJob one(watcher);
        const auto outcome = one.runScan(asked);
        EXPECT_EQ(one.state().deviceInfo.iOSMajorVersion, major);
        EXPECT_EQ(one.state().deviceInfo.iOSMinorVersion, minor);
        EXPECT_EQ(outcome.versionUnknown, unknown);
        EXPECT_TRUE(outcome.versions.lockdown->starts_with("8."));
        EXPECT_FALSE(outcome.encrypted);
        EXPECT_FALSE(one.state().CalendarContent.empty()) << "whichever it counts as";
        EXPECT_FALSE(one.state().fileOutcomes.anyFault());
    }
}

TEST_F(ScanJobs, RefuseWhatTheyCannotUse) {
    sample();
    writeWholeFile(folder / "file.txt", "");
    fs::create_directories(folder / "work/Temp");
    using enum ScanResult;
    const auto expect = [&](ScanResult result, auto change) {
        auto asked = request();
        change(asked);
        EXPECT_EQ(ScanJob(watcher).runScan(asked).result, result) << asked.ios.value_or("");
    };
    expect(SourceUnusable, [&](auto& r) { r.source = folder / "missing"; });
    expect(SourceUnusable, [&](auto& r) { r.source = folder / "file.txt"; });
    for (const int category : {9, -1}) {
        expect(InvalidRequest, [&](auto& r) { r.category = category; });
    }
    for (const char* version : {"", "x", "7.", ".1", "7,1", "-7.0", "7.1 "}) {
        expect(InvalidRequest, [&](auto& r) { r.ios = version; });
    }
    expect(InvalidRequest, [&](auto& r) { r.workFolder = backup / "out"; });
    // Before it begins, even when no picture is asked for.
    expect(WorkFolderRefused, [](auto& r) { r.category = 1; });
    EXPECT_TRUE(fs::is_empty(folder / "work/Temp"));
}

TEST_F(ScanJobs, EndWhenCancelledWithWhatWasFound) {
    sample();
    watcher.moment = "Contacts";
    watcher.act = [this] { job.cancel(); };
    EXPECT_EQ(job.runScan(request()).result, ScanResult::Cancelled);
    EXPECT_FALSE(job.state().SMSContent.empty());

    ScanJob early(watcher);
    early.cancel();
    EXPECT_EQ(early.runScan(request()).result, ScanResult::Cancelled);
    EXPECT_TRUE(early.state().SMSContent.empty());
    EXPECT_TRUE(early.state().statusHistory().empty());
}

TEST_F(ScanJobs, FailWithWhatWasFoundWhenAnExceptionEndsThem) {
    sample();
    watcher.moment = "Contacts";
    watcher.act = [] { throw std::runtime_error("no more today"); };
    const auto outcome = job.runScan(request());
    EXPECT_EQ(outcome.result, ScanResult::Failed);
    EXPECT_EQ(outcome.message, backup.string() + ": the scan ended early: no more today");
    EXPECT_FALSE(job.state().run.complete);
    EXPECT_FALSE(job.state().SMSContent.empty());
    EXPECT_EQ(job.state().fileOutcomes.all()[0].outcome, ReadOutcome::Read);
    EXPECT_EQ(job.state().fileOutcomes.all().back().outcome, ReadOutcome::Partly) << "not reached";
}

TEST_F(ScanJobs, EndWhereverTheCancelFallsAndKeepWhatWasFound) {
    sample();
    ASSERT_EQ(job.runScan(request()).result, ScanResult::Done);
    SampleRandom random(7);
    int cancelled = 0;
    for (int round = 0; round < 40; ++round) {
        ScanJob one(watcher);
        // Spread over the whole of a scan, however long one takes on this machine.
        const auto moment = std::chrono::microseconds(random.below(round < 20 ? 4'000 : 100'000));
        std::jthread hand([&] {
            std::this_thread::sleep_for(moment);
            one.cancel();
        });
        const auto result = one.runScan(request()).result;
        hand.join();
        cancelled += result == ScanResult::Cancelled ? 1 : 0;
        const ScanState& found = one.state();
        for (std::size_t i = 0; i < found.SMSContent.size(); ++i) {
            EXPECT_EQ(found.SMSContent[i]->RowID, job.state().SMSContent.at(i)->RowID);
        }
        EXPECT_LE(found.DeletedSMS.size(), job.state().DeletedSMS.size());
        EXPECT_LE(found.DeletedContact.size(), job.state().DeletedContact.size());
        EXPECT_LE(found.DeletedWhatsApp.size(), job.state().DeletedWhatsApp.size());
    }
    EXPECT_GT(cancelled, 0);
}

/// What a scan reports, without its time.
std::string reportOf(const fs::path& backup) {
    SampleScan scan;
    auto asked = requestFor(backup);
    asked.picturesInPlace = true;
    EXPECT_EQ(scan.run(asked), ScanResult::Done);
    const std::string report = ScanReport::text(scan.state());
    return report.substr(report.find("\"timeZone\": "));
}

TEST_F(ScanJobs, KnowTheBytesToSearchBeforeAnythingIsReadAndSearchAllOfThem) {
    for (int ios = 4; ios <= 9; ++ios) {
        sample({.ios = ios});
        /// Notes the total at the first status, and how far it is after each category.
        class Reader : public ScanObserver {
          public:
            const ScanProgress* progress = nullptr;
            std::atomic<std::uint64_t> total{0}, done{0};
            void onStatus(StatusCode, const std::string&) override {
                if (total == 0) total = progress->bytesTotal.load();
            }
            void onCategoryRecovered(Category) override {
                const std::uint64_t now = progress->bytesDone;
                for (auto was = done.load(); was < now && !done.compare_exchange_weak(was, now);)
                    continue;
            }
        } reader;
        ScanJob one(reader);
        reader.progress = &one.state().progress;
        ASSERT_EQ(one.runScan(request()).result, ScanResult::Done);
        EXPECT_GT(reader.total, 0U);
        EXPECT_EQ(reader.done, reader.total) << "iOS " << ios;
        EXPECT_EQ(one.state().progress.bytesTotal, reader.total);
    }
}

TEST_F(ScanJobs, EightAtOnceGiveEqualResults) {
    sample();
    const std::string alone = reportOf(backup);
    std::vector<std::string> others(8);
    {
        std::vector<std::jthread> scans;
        for (auto& one : others) scans.emplace_back([&] { one = reportOf(backup); });
    }
    for (const auto& one : others) EXPECT_TRUE(one == alone);
}

TEST_F(ScanJobs, KeepWhatWasReadWhenTheBackupIsRemovedOrShrinksMeanwhile) {
    const auto remove = [this] { fs::remove_all(backup); };
    const auto shrink = [this] {
        for (const auto& entry : fs::directory_iterator(backup)) {
            if (entry.is_regular_file()) fs::resize_file(entry.path(), 100);
        }
    };
    const char* recovery = "Recovering deleted data. Please wait...";
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"Contacts", remove}, {"Calendar", remove}, {recovery, remove}, {recovery, shrink}};
    for (const auto& [moment, act] : cases) {
        SCOPED_TRACE(moment);
        const auto written = sample();
        watcher.moment = moment;
        watcher.act = act;
        ScanJob one(watcher);
        EXPECT_EQ(one.runScan(request()).result, ScanResult::Done);
        EXPECT_EQ(one.state().SMSContent.size(),
                  SampleTruth::of(written.truth.live, "message").size());
    }
}

TEST_F(ScanJobs, PassOverWhatIsNoFile) {
    const fs::path file = sample().file("HomeDomain", "Library/Calendar/Calendar.sqlitedb");
    const std::function<void()> makers[] = {
        [&] { fs::create_directory(file); },
        [&] { fs::create_symlink("nowhere", file); },
        [&] { fs::create_symlink(file.filename(), file); },
        [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); },
        [&] { fs::create_symlink("/dev/zero", file); },
    };
    for (const auto& make : makers) {
        fs::remove_all(file);
        make();
        SampleScan one;
        EXPECT_EQ(one.run(request()), ScanResult::Done);
        EXPECT_TRUE(one.state().CalendarContent.empty());
        EXPECT_FALSE(one.state().NotesContent.empty());
    }
}

}  // namespace
}  // namespace salvor
