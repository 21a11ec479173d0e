#include "app/SalvorAppDelegate.h"

#include <gmock/gmock.h>
#include <mutex>
#include <stdexcept>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// Counts the services that ran and does what a test wants of them.
struct Work {
    std::function<void(int, const std::stop_token&)> run = [](int, const std::stop_token&) {};
    std::atomic<int> services{0};
    std::atomic<int> scans{0};
};

class FakeServices : public ServiceRunner {
  public:
    explicit FakeServices(Work& work) : work_(work) { ++work_.scans; }
    void setDevice(const DeviceInfo&) override {}
    void StartRecoveryofService(int serviceCode, std::stop_token cancelled) override {
        ++work_.services;
        work_.run(serviceCode, cancelled);
    }

  private:
    Work& work_;
};

class Application : public testing::Test, public ScanObserver {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(backup);
        app.setWorkFolder(folder / "work");
        app.loadRecoverySignatures(SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml");
    }
    void writeInfo() const {
        PropertyListDictionary info;
        info.text("Device Name", "Phone").text("Product Version", "7.1");
        info.writeXml(backup / "Info.plist");
    }
    void onStatus(StatusCode, const std::string& text) override {
        if (text == cancelAt) app.cancel();
    }
    void onScreen(Screen screen) override {
        note("screen " + std::to_string(static_cast<int>(screen)));
    }
    void onTabSelected(Category category) override {
        note("tab " + std::to_string(codeOf(category)));
    }
    void onCategoryRead(Category category) override {
        note("read " + std::to_string(codeOf(category)));
    }
    void onCategoryRecovered(Category) override { note("recovered"); }
    void onScanEnded(ScanEnd end, const std::string& reason) override {
        note("end " + std::to_string(static_cast<int>(end)) + " " + reason);
    }
    void onWarning(const std::string& text) override { note("warning " + text); }
    std::vector<std::string> lastTwo() const { return {events.end() - 2, events.end()}; }
    void note(const std::string& event) {
        const std::lock_guard lock(mutex);
        events.push_back(event);
    }

    TempFolder folder;
    std::filesystem::path backup = folder / "backup";
    std::mutex mutex;
    std::vector<std::string> events;
    std::string cancelAt;
    Work work;
    SalvorAppDelegate app{this,
                          [this](ScanState&) { return std::make_unique<FakeServices>(work); }};
};

TEST_F(Application, GoesFromAChosenListToTheResult) {
    writeInfo();
    writeWholeFile(backup / "Status.plist", "");
    EXPECT_EQ(SalvorAppDelegate::appDelegate(), &app);
    EXPECT_EQ(app.MacRecovery(backup / "Status.plist", {4, ""}), SourceChoice::Ready);
    app.waitForScan();
    EXPECT_EQ(app.state().BACKUP_DIRECTORY, backup.string());
    EXPECT_EQ(app.state().RecoverType, 1);
    EXPECT_EQ(app.state().deviceInfo.iOSMajorVersion, 7);
    EXPECT_TRUE(app.state().hasDoneScan);
    EXPECT_FALSE(app.state().isDoingRecovery);
    EXPECT_EQ(work.services, 1);
    EXPECT_THAT(events, ElementsAre("screen 2", "screen 2", "tab 4", "read 4", "tab 4", "recovered",
                                    "screen 3", "end 0 "));
    EXPECT_EQ(
        app.state().statusHistory().back(),
        std::pair(StatusCode::Result, std::string("Recovering deleted data. Please wait...")));
}

TEST_F(Application, AsksWhenThePropertyListsAreMissing) {
    EXPECT_EQ(app.MacRecovery(backup, {0, ""}), SourceChoice::MissingPropertyLists);
    EXPECT_EQ(work.scans, 0);
    app.continueToRecover({0, ""});
    app.waitForScan();
    EXPECT_EQ(app.state().deviceInfo.iOSMajorVersion, 0);
    EXPECT_EQ(work.services, 8);
    EXPECT_THAT(events, Contains("tab 2"));
    EXPECT_EQ(app.MacRecovery(folder / "missing", {0, ""}), SourceChoice::Unusable);
    EXPECT_EQ(app.state().BACKUP_DIRECTORY, backup.string()) << "the source stays";
}

TEST_F(Application, EndsAScanThatFailsAsIfFinished) {
    writeInfo();
    app.chooseBackup(backup);
    SalvorAppDelegate failing(this, [](ScanState&) -> std::unique_ptr<ServiceRunner> {
        throw std::runtime_error("no services today");
    });
    failing.chooseBackup(backup);
    failing.ExploreBackupDirectoryWithDataType({1, ""});
    EXPECT_TRUE(failing.state().hasDoneScan);
    EXPECT_FALSE(failing.state().isDoingRecovery);
    EXPECT_THAT(events, Contains(AllOf(HasSubstr("                            Where: \n"),
                                       HasSubstr("Exception: std::runtime_error\n"),
                                       HasSubstr("Reason: no services today\n"))));
    EXPECT_THAT(events, Contains("warning " + backup.string() +
                                 ": the scan ended early: no services today"));
    EXPECT_THAT(lastTwo(), ElementsAre("screen 3", "end 3 no services today"));
}

TEST_F(Application, EndsAScanThatCannotBeginAsFinishedToo) {
    writeInfo();
    app.chooseBackup(backup);
    app.cancel();
    app.ExploreBackupDirectoryWithDataType({0, ""});
    EXPECT_TRUE(app.state().hasDoneScan);
    EXPECT_THAT(lastTwo(), ElementsAre("screen 3", "end 1 cancelled"));

    std::filesystem::create_directories(folder / "work/Temp");
    SalvorAppDelegate other(this);
    other.setWorkFolder(folder / "work");
    other.chooseBackup(backup);
    other.ExploreBackupDirectoryWithDataType({2, ""});
    EXPECT_TRUE(other.state().hasDoneScan);
    EXPECT_EQ(other.servicesMgr(), nullptr);
    EXPECT_THAT(lastTwo(), ElementsAre("screen 3", "end 2 " + other.workFolderFailure()));
}

TEST_F(Application, CancelDuringTheExtractionStartsNoWorker) {
    writeInfo();
    app.chooseBackup(backup);
    cancelAt = "WhatsApp";
    app.ExploreBackupDirectoryWithDataType({0, ""});
    EXPECT_EQ(work.scans, 0);
    EXPECT_TRUE(app.cancelRequested());
    EXPECT_TRUE(app.state().hasDoneScan);
    EXPECT_THAT(lastTwo(), ElementsAre("screen 3", "end 1 cancelled"));
    EXPECT_EQ(app.state().statusHistory().back().second, "0 WhatsApp Retreived");
    EXPECT_THAT(events, Contains("read 5")) << "with what was read until then";
    EXPECT_THAT(events, Not(AnyOf(Contains("read 6"), Contains("recovered"))));
}

TEST_F(Application, CancelReachesTheWorkersAndNotTheNextScan) {
    writeInfo();
    app.chooseBackup(backup);
    std::atomic<bool> endless{true};
    work.run = [&](int, const std::stop_token& cancelled) {
        while (endless && !cancelled.stop_requested()) std::this_thread::yield();
    };
    app.exploreInBackground({0, ""});
    while (work.services < 3) std::this_thread::yield();
    app.cancel();
    app.waitForScan();
    EXPECT_TRUE(app.cancelRequested());
    EXPECT_EQ(work.services, 8);
    EXPECT_THAT(lastTwo(), ElementsAre("screen 3", "end 1 cancelled"));

    endless = false;
    app.exploreInBackground({3, ""});
    app.waitForScan();
    EXPECT_FALSE(app.cancelRequested());
    EXPECT_EQ(work.services, 9);
}

TEST_F(Application, SaysWhatIsWrongWithTheSignaturesAndGoesOn) {
    SalvorAppDelegate other(this);
    other.applicationDidFinishLaunching(folder / "missing.xml");
    other.state().signatureLoaded.wait(false);
    EXPECT_THAT(events, Contains(HasSubstr("missing.xml")));
    EXPECT_TRUE(other.state().recoverySignatures);
}

}  // namespace
}  // namespace salvor
