#include "services/ServicesManager.h"

#include "scan/Categories.h"
#include "scan/StoredNames.h"
#include "services/MessageServices.h"
#include "services/messageServicesIOS7_8.h"
#include "tests/support/ScanFixture.h"
#include "tests/support/Signatures.h"

namespace salvor {
namespace {

/// Notes what is asked of it.
class RecordingService : public abstractServices {
  public:
    RecordingService(ScanState& state, std::string name, Texts& calls)
        : abstractServices(state, std::move(name)), calls_(calls) {}
    void RecoverFromIOSBackup(const DeviceInfo& device) override {
        calls_.push_back(SqliteDbName() + device.DeviceName.value_or(""));
        if (onRun) onRun();
    }
    bool cancelled() const { return cancelled_.stop_requested(); }
    std::function<void()> onRun;

  private:
    Texts& calls_;
};

class Manager : public ScanFixture {
  protected:
    ServiceMakers recording() {
        ServiceMakers makers;
        for (const CategoryFacts& facts : categories()) {
            const std::string name = facts.word;
            makers[facts.service] = [this, name](ScanState& scan, const DeviceInfo&) {
                made.push_back(name);
                return std::make_unique<RecordingService>(scan, name, calls);
            };
        }
        return makers;
    }

    static Texts wordsBy(int Places::*place) {
        Texts words;
        for (const auto* facts : categoriesBy(place)) words.push_back(facts->word);
        return words;
    }

    DeviceInfo device;
    Texts made, calls;
};

TEST_F(Manager, MakesAndRunsTheServicesInTheirOrders) {
    ServicesManager manager(state, device, recording());
    EXPECT_EQ(made, wordsBy(&Places::making));
    manager.StartRecovery();
    EXPECT_EQ(calls, wordsBy(&Places::module));
}

TEST_F(Manager, RunsOneServiceByItsNumber) {
    ServicesManager manager(state, device, recording());
    DeviceInfo other;
    other.DeviceName = "!";
    manager.setDevice(other);
    Texts expected;
    for (const CategoryFacts& facts : categories()) {
        manager.StartRecoveryofService(static_cast<int>(facts.service));
        expected.push_back(facts.word + std::string("!"));
    }
    for (const int none : {-1, static_cast<int>(kCategoryCount)})
        manager.StartRecoveryofService(none);
    EXPECT_EQ(calls, expected);
}

TEST_F(Manager, CategoriesThatAreNotBuiltYieldNothing) {
    ServicesManager manager(state, device, {});
    for (const CategoryFacts& facts : categories())
        manager.StartRecoveryofService(static_cast<int>(facts.service));
    manager.StartRecovery();
    EXPECT_EQ(manager.noteServ, nullptr);
}

TEST_F(Manager, HandsTheCancelOnAndStopsBetweenServices) {
    ServicesManager manager(state, device, recording());
    std::stop_source source;
    auto& first = static_cast<RecordingService&>(*manager.messageServ);
    first.onRun = [&] { source.request_stop(); };
    manager.StartRecovery(source.get_token());
    EXPECT_EQ(calls, Texts{"messages"});
    EXPECT_TRUE(first.cancelled());
}

TEST_F(Manager, DrivesTheChatLayoutWhateverTheVersion) {
    for (const int version : {4, 5, 9}) {
        device.iOSMajorVersion = version;
        ServicesManager manager(state, device);
        EXPECT_NE(dynamic_cast<messageServicesIOS7_8*>(manager.messageServ.get()), nullptr);
    }
}

TEST_F(Manager, ServicesFindNothingInBadFiles) {
    state.recoverySignatures = shippedSignatures();
    const std::tuple<ServiceIndex, int, const char*> cases[] = {
        {ServiceIndex::Messages, 7, MessagesSqliteDbName},
        {ServiceIndex::CameraRoll, 7, PhotosSqliteDbName},
        {ServiceIndex::Contacts, 7, ContactsIOS641SqliteDbName},
        {ServiceIndex::CallHistory, 7, CallHistoryIOS7641SqliteDbName},
        {ServiceIndex::Calendars, 7, CalendarsSqliteDbName},
        {ServiceIndex::Notes, 8, NotesIOS641SqliteDbName},
        {ServiceIndex::Notes, 9, NotesIOS9SqliteDbName},
        {ServiceIndex::WhatsApp, 7, WhatsAppSqliteDbName}};
    for (const auto& [service, version, name] : cases) {
        SCOPED_TRACE(name);
        device.iOSMajorVersion = version;
        overBadFiles(name, [&, made = service] {
            const auto one = builtServices().at(made)(state, device);
            one->RecoverFromIOSBackup(device);
            EXPECT_TRUE(one->model().empty());
            for (const auto& [category, live, deleted] : countRecords(state, kEverything))
                EXPECT_EQ(live + deleted, 0U) << category.word;
        });
        std::filesystem::remove(folder / name);
    }
}

TEST_F(Manager, ServicesFindTheirDatabase) {
    const RecordingService service(state, "3dname", calls);
    EXPECT_EQ(service.ConnectionFileFullPath(device).path, folder / "3dname");
    EXPECT_FALSE(service.ConnectionString(device));
    std::filesystem::create_directory(folder / "3d");
    writeWholeFile(folder / "3d/3dname", "x");
    EXPECT_EQ(service.ConnectionString(device)->path, folder / "3d/3dname");
    device.fullPath = "";
    EXPECT_EQ(service.ConnectionStringfromDevice(device).path, folder / "3d/3dname");
    device.fullPath = (folder / "own").string();
    EXPECT_EQ(service.ConnectionStringfromDevice(device).path, folder / "own");
    EXPECT_FALSE(service.ConnectionString(device));
    EXPECT_EQ(service.retrieved(), 0);
    EXPECT_EQ(service.recovered(), 0);
    EXPECT_TRUE(service.model().empty());
}

}  // namespace
}  // namespace salvor
