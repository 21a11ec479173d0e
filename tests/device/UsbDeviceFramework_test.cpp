#include "device/UsbDeviceFramework.h"

#include <filesystem>

#include "tests/device/UsbFixture.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UsbDevices : public UsbFixture {
  protected:
    /// The identifiers of what the daemon lists, or nothing when none answers.
    static std::optional<Strings> attached() {
        std::vector<AttachedDevice> devices;
        if (listAttachedDevices(devices) != kAMDSuccess) return std::nullopt;
        Strings udids;
        for (const auto& device : devices) udids.push_back(device.udid);
        return udids;
    }
};

TEST_F(UsbDevices, ComeAndGo) {
    const auto wireless = phone("Wireless");
    wireless->connection = "Network";
    daemon.plugIn(1, wireless);
    daemon.plugIn(2, phone("Ada"));
    start();
    ASSERT_TRUE(waitForTold(1));
    daemon.plugIn(7, phone("Bert"));
    ASSERT_TRUE(waitForTold(2));
    EXPECT_EQ(attached(), Strings({"Ada-UDID", "Bert-UDID"}));
    EXPECT_EQ(access->devices()[1]->udid(), "Bert-UDID");
    daemon.pullOut(2);
    ASSERT_TRUE(waitForTold(3));
    daemon.plugIn(7, phone("Carl"));  // a number used anew is a new device
    ASSERT_TRUE(waitForTold(5));
    EXPECT_THAT(told, ElementsAre("+Ada", "+Bert", "-Ada", "-Bert", "+Carl"));
    EXPECT_EQ(access->devices().size(), 1U);
}

struct SessionCase {
    const char* what;
    bool encrypted;
    bool onlyTls1;
};
const SessionCase kSessionCases[] = {
    {"in the clear", false, false}, {"encrypted", true, false}, {"with TLS 1.0", true, true}};

TEST_F(UsbDevices, TellTheirValuesInSessions) {
    for (const auto& one : kSessionCases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->encrypted = one.encrypted;
        ada->onlyTls1 = one.onlyTls1;
        ada->openValues = {"DeviceName"};
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        EXPECT_EQ(device->udid(), "Ada-UDID") << "known where the device does not tell it";
        const auto all = device->allDeviceValuesForDomain("com.apple.mobile.backup");
        ASSERT_TRUE(all) << device->lasterror();
        EXPECT_EQ(all->dictionary().text("Version"), "2.4");
        EXPECT_FALSE(all->dictionary().has("ProductVersion"));
        EXPECT_EQ(textOf(device->deviceValueForKey("Version", "com.apple.mobile.backup")), "2.4");
        EXPECT_FALSE(device->deviceValueForKey("Version")) << "not of the default domain";
        EXPECT_EQ(device->lasterror(), "") << "a value that is not there is no failure";
        EXPECT_EQ(textOf(device->publicValueForKey("DeviceName")), "Ada");
        EXPECT_FALSE(device->publicValueForKey("ProductVersion")) << "told in a session alone";

        const Strings before = ada->requests();
        ASSERT_TRUE(device->deviceConnect());
        for (const char* key : {"ProductVersion", "ProductType"})
            EXPECT_TRUE(device->deviceValueForKey(key)) << key << device->lasterror();
        ASSERT_TRUE(device->startSession());
        EXPECT_TRUE(device->deviceValueForKey("ProductType"));
        EXPECT_TRUE(device->publicValueForKey("ProductVersion")) << "within the session";
        EXPECT_TRUE(device->stopSession());
        EXPECT_TRUE(device->deviceDisconnect());
        for (const char* request : {"StartSession", "StopSession"}) {
            const Strings after = ada->requests();
            EXPECT_EQ(std::count(after.begin(), after.end(), request),
                      std::count(before.begin(), before.end(), request) + 3);
        }
    }
}

TEST_F(UsbDevices, ComeAndGoWithTheDaemon) {
    daemon.stop();
    EXPECT_EQ(attached(), std::nullopt);
    start();
    EXPECT_TRUE(access->subscribed());
    daemon.plugIn(1, phone("Ada"));
    daemon.plugIn(2, phone("Bert"));
    daemon.start();
    ASSERT_TRUE(waitForTold(2));
    const auto ada = access->devices()[0];
    daemon.stop();
    EXPECT_FALSE(ada->deviceValueForKey("ProductVersion"));
    EXPECT_EQ(ada->lastStatus(), kAMDNotConnected);
    ASSERT_TRUE(waitForTold(4));
    EXPECT_THAT(access->devices(), IsEmpty());
    daemon.start();
    ASSERT_TRUE(waitForTold(6));
    EXPECT_THAT(told, ElementsAre("+Ada", "+Bert", "-Ada", "-Bert", "+Ada", "+Bert"));
}

TEST_F(UsbDevices, WatchingEndsAndBeginsAgainAtAnyMoment) {
    daemon.plugIn(1, phone());
    for (int round = 0; round < 30; ++round) {
        start();
        if (round % 3 == 1) std::this_thread::sleep_for(std::chrono::milliseconds(round / 3));
        if (round % 3 == 2) {
            ASSERT_TRUE(waitForTold(1));
        }
        access.reset();
        told.clear();
    }
}

TEST_F(UsbDevices, AreNoneWhereTheDaemonRefusesToListThem) {
    daemon.plugIn(1, phone());
    daemon.refuse();
    EXPECT_EQ(attached(), std::nullopt);
}

std::ptrdiff_t openFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(UsbDevices, ADaemonThatIsNoneIsWithstood) {
    using namespace std::string_literals;
    const std::pair<const char*, std::string> cases[] = {
        {"hangs up", ""},
        {"garbage", std::string(16, '\x7f') + "no packet at all"},
        {"a packet of 4 GiB", "\xff\xff\xff\xff\1\0\0\0\10\0\0\0\1\0\0\0<plist>"s}};
    for (const auto& [what, nonsense] : cases) {
        SCOPED_TRACE(what);
        daemon.meetWith(nonsense);
        EXPECT_EQ(attached(), std::nullopt);
        const auto filesBefore = openFiles();
        const int clientsBefore = daemon.clients();
        start();
        access->waitForConnection({}, std::chrono::milliseconds(500));
        EXPECT_LT(daemon.clients() - clientsBefore, 200) << "asks without a pause";
        EXPECT_LT(openFiles(), filesBefore + 10) << "loses files";
        EXPECT_THAT(told, IsEmpty());
        daemon.meetWith(std::nullopt);
        daemon.plugIn(1, phone());
        EXPECT_TRUE(waitForTold(1)) << "it mends";
        access.reset();
        daemon.pullOut(1);
        told.clear();
    }
}

}  // namespace
}  // namespace salvor
