#include <gmock/gmock.h>

#include "app/SalvorAppDelegate.h"
#include "backup/BackupSource.h"
#include "tests/device/FakeFramework.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kUdid = "00AAbb";
constexpr auto kFolder = "00aabb";

/// Services that only look at where the scan comes from.
class NoServices : public ServiceRunner {
  public:
    explicit NoServices(const ScanState& state) : state_(state) {}
    void setDevice(const DeviceInfo& device) override { device_ = device; }
    void StartRecoveryofService(int, std::stop_token) override {
        if (state_.RecoverType == 0) device_ = state_.deviceInfo;
    }

  private:
    const ScanState& state_;
    DeviceInfo device_;
};

class ConnectedDevice : public testing::Test, public ScanObserver, public FreshBackupQuestions {
  protected:
    ConnectedDevice() {
        app.setWorkFolder(folder / "work");
        app.loadRecoverySignatures(SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml");
        useHelper("exit 0");
        app.listenForDevices(access);
        phone = &framework->add(1, "Phone", kUdid);
        phone->values["- ProductVersion"] = "7.1.2";
    }

    /// `script` finds the identifier in $1 and the folder of all backups in $2.
    void useHelper(const std::string& script) {
        app.setFreshBackup({root, {{"sh", "-c", script, "helper", "{udid}", "{folder}"}}}, this);
    }
    void plugIn(AMDeviceRef device = 1) { framework->happens(AMDeviceMessage::Connected, device); }
    void pullOut(AMDeviceRef device = 1) {
        framework->happens(AMDeviceMessage::Disconnected, device);
    }
    FreshBackup backUp() {
        app.BackupAgent(kUdid);
        return app.waitForBackup();
    }
    /// Until the helper has written this file into the folder of all backups.
    void waitForFile(const char* name) const {
        while (!fs::exists(root / name)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }

    void onDeviceConnected(bool connected) override {
        events.push_back(connected ? "connected" : "gone");
    }
    void onBackupComplete() override { events.push_back("complete"); }
    void onScreen(Screen screen) override { screens.push_back(screen); }
    bool tryAgain(const std::string& text, const std::string&) override {
        events.push_back(text);
        return answers-- > 0;
    }
    bool continueAnyway(const std::string& text) override {
        events.push_back(text);
        return answers-- > 0;
    }

    TempFolder folder;
    fs::path root = folder / "backups";
    std::vector<std::string> events;
    std::vector<Screen> screens;
    int answers = 0;  ///< questions that are answered Yes
    FakeFramework* framework = new FakeFramework;
    MobileDeviceAccess access{std::unique_ptr<MobileDeviceFramework>(framework)};
    SalvorAppDelegate app{this,
                          [](ScanState& state) { return std::make_unique<NoServices>(state); }};
    FakeFramework::Device* phone = nullptr;
    const DeviceInfo& described = app.state().deviceInfo;
};

TEST_F(ConnectedDevice, IsDescribedByItsValues) {
    phone->values["- SerialNumber"] = "S1";
    phone->values["- ProductType"] = "iPhone5,1";
    phone->values["- FirmwareVersion"] = "iBoot";
    phone->values["- InternationalMobileEquipmentIdentity"] = "990";
    plugIn();
    EXPECT_TRUE(app.getInfoFromDeviceOrBackup());
    EXPECT_EQ(described.DeviceName, "Phone");
    EXPECT_EQ(described.UniqueDeviceID, kFolder);
    EXPECT_EQ(described.SerialNumber, "S1");
    EXPECT_EQ(described.ProductType, "iPhone5,1");
    EXPECT_EQ(described.FirmwareVersion, "iBoot");
    EXPECT_EQ(described.IMEI, "990");
    EXPECT_EQ(described.IMSI, "") << "kept as reset when the device returns none";
    EXPECT_EQ(described.PhoneNumber, std::nullopt);
    EXPECT_EQ(described.AssignSize, "N/A");
    EXPECT_TRUE(described.Connected);
    EXPECT_EQ(described.iOSMajorVersion, 7);
    EXPECT_EQ(described.iOSMinorVersion, 1);
    EXPECT_EQ(app.state().BACKUP_DIRECTORY, (root / kFolder).string());
    EXPECT_EQ(described.BackupLocation, app.state().BACKUP_DIRECTORY);
    EXPECT_EQ(app.state()._deviceInfoBackup->UniqueDeviceID, kFolder);
    EXPECT_FALSE(access.devices()[0]->connected());
}

TEST_F(ConnectedDevice, IsKnownToBeEncryptedByAManifestWithoutVersion) {
    plugIn();
    fs::create_directories(root / kFolder);
    for (const bool hasVersion : {true, false}) {
        PropertyListDictionary manifest;
        manifest.boolean("IsEncrypted", true);
        if (hasVersion) manifest.text("ProductVersion", "7.1");
        manifest.writeXml(root / kFolder / "Manifest.plist");
        app.getInfoFromDevice();
        EXPECT_EQ(described.knownIfEncrypted, !hasVersion);
        EXPECT_EQ(described.isEncrypted, !hasVersion);
    }
}

TEST_F(ConnectedDevice, ThatIsNoneGivesNoDescription) {
    app.state().BACKUP_DIRECTORY = "before";
    EXPECT_FALSE(app.getInfoFromDevice());
    EXPECT_EQ(described.DeviceName, "") << "an empty name counts as one";
    EXPECT_FALSE(described.Connected);
    EXPECT_EQ(app.state().BACKUP_DIRECTORY, "before");
    // One that does not answer has no version and no name, which is not complete either.
    plugIn();
    phone->failing["StartSession"] = kAMDPasswordProtected;
    EXPECT_FALSE(app.getInfoFromDevice());
    EXPECT_EQ(described.DeviceName, std::nullopt);
    EXPECT_TRUE(described.Connected);
}

TEST_F(ConnectedDevice, IsTheNamedOneThatCameLastOrTheFirstThatIsWholeWithoutAny) {
    framework->devices[2].values = {{"- UniqueDeviceID", "nameless"}};
    framework->devices[3].values = {{"- DeviceName", "without identifier"}};
    for (const AMDeviceRef device : {2U, 3U, 1U, 2U}) plugIn(device);
    EXPECT_EQ(app.mDevice()->deviceName(), "Phone");
    EXPECT_THAT(events, ElementsAre("connected", "connected"));
    app.chooseDevice(nullptr);
    app.getInfoFromDevice();
    EXPECT_EQ(app.mDevice()->deviceName(), "Phone");
    app.chooseDevice(access.devices()[1]);
    app.getInfoFromDevice();
    EXPECT_EQ(described.DeviceName, "without identifier");
}

// Deliberate: the mark goes although another device is still there.
TEST_F(ConnectedDevice, ThatGoesTurnsToBackups) {
    framework->add(2, "Tablet", "22");
    plugIn(1);
    plugIn(2);
    app.getInfoFromDevice();
    app.state().RecoverType = 0;
    pullOut(2);
    EXPECT_EQ(app.state().RecoverType, 1);
    EXPECT_FALSE(described.Connected);
    EXPECT_EQ(app.mDevice()->deviceName(), "Tablet");
    EXPECT_THAT(events, ElementsAre("connected", "connected", "gone"));
    fs::create_directories(folder / "chosen");
    useBackup(app.state(), folder / "chosen");
    app.getInfoFromDeviceOrBackup();
    EXPECT_EQ(described.BackupLocation, (folder / "chosen").string());
}

// For ThreadSanitizer: what the removal of a device sets, the services of a scan read.
TEST_F(ConnectedDevice, MayComeAndGoBesideAScan) {
    fs::create_directories(folder / "chosen");
    useBackup(app.state(), folder / "chosen");
    app.exploreInBackground({0, ""});
    do {
        plugIn();
        pullOut();
    } while (!app.state().hasDoneScan);
    app.waitForScan();
    EXPECT_EQ(app.state().RecoverType, 1);
    EXPECT_FALSE(described.Connected);
}

TEST_F(ConnectedDevice, IsBackedUpOnceAtATimeAndThenScanned) {
    useHelper("mkdir \"$2/$1\" && touch \"$2/$1/Info.plist\"");
    plugIn();
    EXPECT_TRUE(app.BackupAgent(kUdid, dataTypeHolder{4, ""}));
    EXPECT_FALSE(app.BackupAgent(kUdid));
    const auto backup = app.waitForBackup();
    EXPECT_EQ(backup.end, FreshBackupEnd::Complete);
    EXPECT_EQ(backup.folder, root / kUdid) << "as the helper named it";
    app.waitForScan();
    EXPECT_EQ(app.state().RecoverType, 0);
    EXPECT_EQ(app.state().BACKUP_DIRECTORY, backup.folder.string());
    EXPECT_TRUE(app.state().hasDoneScan);
    EXPECT_THAT(events, ElementsAre("connected", "complete"));
    EXPECT_THAT(screens, ElementsAre(Screen::Progress, Screen::Progress, Screen::Main));
}

// What was backed up must not bear the name and the version of another.
TEST_F(ConnectedDevice, IsDescribedAfterItsBackupAlthoughAnotherCame) {
    framework->add(2, "Tablet", "22").values["- ProductVersion"] = "9.3";
    plugIn();
    app.BackupAgent(kUdid);
    framework->happensLater(AMDeviceMessage::Connected, 2);
    EXPECT_EQ(app.waitForBackup().end, FreshBackupEnd::Complete);
    EXPECT_EQ(described.DeviceName, "Phone");
    EXPECT_EQ(described.iOSMajorVersion, 7);
    pullOut(2);
    events.clear();
    app.BackupAgent(kUdid);
    framework->happensLater(AMDeviceMessage::Disconnected, 1);
    framework->happensLater(AMDeviceMessage::Connected, 2);
    EXPECT_EQ(app.waitForBackup().end, FreshBackupEnd::MissingPropertyLists);
    EXPECT_NE(described.DeviceName, "Tablet");
}

TEST_F(ConnectedDevice, IsBackedUpAlthoughAnotherGoes) {
    framework->add(2, "Tablet", "22");
    plugIn(2);
    plugIn();
    app.BackupAgent(kUdid);
    framework->happensLater(AMDeviceMessage::Disconnected, 2);
    const auto backup = app.waitForBackup();
    EXPECT_EQ(backup.end, FreshBackupEnd::Complete);
    EXPECT_EQ(backup.unplugged, "");
    EXPECT_EQ(described.DeviceName, "Phone");
    EXPECT_TRUE(described.Connected);
    EXPECT_EQ(app.state().RecoverType, 0);
}

TEST_F(ConnectedDevice, ThatGoesDuringItsBackupIsNamed) {
    const struct {
        const char* what;
        const char* helper;
        std::vector<AMDeviceMessage> messages;  ///< while the helper runs
        bool listed;                            ///< still, when it ends
        const char* unplugged;
    } cases[] = {
        {"goes", "exit 255", {AMDeviceMessage::Disconnected}, false, "Phone"},
        {"comes back",
         "exit 255",
         {AMDeviceMessage::Disconnected, AMDeviceMessage::Connected},
         true,
         "Phone"},
        {"has gone, untold", "exit 255", {}, false, "Phone"},
        {"has gone after its backup", "exit 0", {AMDeviceMessage::Disconnected}, false, "Phone"},
        {"stays", "exit 255", {}, true, ""},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        useHelper(one.helper);
        plugIn();
        app.BackupAgent(kUdid);
        for (const auto message : one.messages) framework->happensLater(message, 1);
        if (!one.listed) framework->attached.clear();
        EXPECT_EQ(app.waitForBackup().unplugged, one.unplugged);
        pullOut();
    }
}

// Kept: helper-failure-is-an-end.
TEST_F(ConnectedDevice, IsRefusedWhenItIsLockedAndBackedUpAtAnyOtherEnd) {
    plugIn();
    for (const auto& [script, end] :
         {std::pair("exit 48", FreshBackupEnd::Refused),
          {"exit 1", FreshBackupEnd::Refused},
          {"echo 'ErrorCode 208: Device locked'; exit 9", FreshBackupEnd::Refused},
          {"exit 255", FreshBackupEnd::Complete},
          {"kill -KILL $$", FreshBackupEnd::Complete}}) {
        useHelper(script);
        EXPECT_EQ(backUp().end, end) << script;
    }
}

TEST_F(ConnectedDevice, IsNotTakenForBackedUpWhenTheCancelComesAfterTheHelper) {
    useHelper("touch \"$2/done\"; exit 1");
    plugIn();
    app.BackupAgent(kUdid);
    waitForFile("done");
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    app.cancel();
    answers = 1;
    EXPECT_EQ(app.waitForBackup().end, FreshBackupEnd::Cancelled);
    EXPECT_THAT(events, ElementsAre("connected")) << "nothing is asked any more";
}

TEST_F(ConnectedDevice, ThatIsGoneAfterItsBackupIsAskedAbout) {
    useHelper("exit 1");
    plugIn();
    pullOut();
    events.clear();
    EXPECT_EQ(backUp().end, FreshBackupEnd::MissingPropertyLists);
    answers = 1;
    EXPECT_EQ(backUp().end, FreshBackupEnd::Complete);
    EXPECT_EQ(app.state().BACKUP_DIRECTORY, (root / kFolder).string());
    EXPECT_THAT(events, ElementsAre(kMissingPropertyListsAfterBackup,
                                    kMissingPropertyListsAfterBackup, "complete"));
}

TEST_F(ConnectedDevice, BackupEndsWhenItIsCancelled) {
    useHelper(
        "trap 'touch \"$2/asked\"; exit 0' TERM; touch \"$2/begun\"; while :; do sleep 0.01; done");
    plugIn();
    app.BackupAgent(kUdid);
    const std::jthread person([this] {
        waitForFile("begun");
        app.cancel();
    });
    EXPECT_EQ(app.waitForBackup().end, FreshBackupEnd::Cancelled);
    useHelper("exit 0");
    EXPECT_EQ(backUp().end, FreshBackupEnd::Complete) << "the next one is another's";
    EXPECT_TRUE(fs::exists(root / "asked"));
}

}  // namespace
}  // namespace salvor
