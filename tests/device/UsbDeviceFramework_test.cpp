#include "device/UsbDeviceFramework.h"

#include <filesystem>

#include "tests/device/UsbFixture.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using UsbDevices = UsbFixture;

AMDStatus attachedDevices(std::vector<std::string>& udids) {
    std::vector<AttachedDevice> devices;
    const AMDStatus status = listAttachedDevices(devices);
    for (const auto& device : devices) udids.push_back(device.udid);
    return status;
}

TEST_F(UsbDevices, ComeAndGo) {
    plugIn(1, phone("Ada"));
    start();
    ASSERT_TRUE(waitForTold(1));
    plugIn(7, phone("Bert"));
    ASSERT_TRUE(waitForTold(2));
    EXPECT_EQ(access->devices()[0]->udid(), "Ada-UDID");
    EXPECT_EQ(access->devices()[1]->description(), "AMDevice('Bert')");
    std::vector<std::string> udids;
    EXPECT_EQ(attachedDevices(udids), kAMDSuccess);
    EXPECT_THAT(udids, ElementsAre("Ada-UDID", "Bert-UDID"));
    daemon.pullOut(99);  // never plugged in
    daemon.pullOut(1);
    ASSERT_TRUE(waitForTold(3));
    EXPECT_THAT(told, ElementsAre("+Ada", "+Bert", "-Ada"));
    EXPECT_EQ(access->devices().size(), 1U);
}

TEST_F(UsbDevices, AreThoseAtACableAlone) {
    daemon.plugIn(1, phone("Wireless"), "Network");
    daemon.plugIn(2, phone("Wired"));
    start();
    ASSERT_TRUE(waitForTold(1));
    EXPECT_THAT(told, ElementsAre("+Wired"));
    std::vector<std::string> udids;
    EXPECT_EQ(attachedDevices(udids), kAMDSuccess);
    EXPECT_THAT(udids, ElementsAre("Wired-UDID"));
}

TEST_F(UsbDevices, ANumberUsedAnewIsANewDevice) {
    start();
    plugIn(3, phone("Ada"));
    ASSERT_TRUE(waitForTold(1));
    plugIn(3, phone("Bert"));
    ASSERT_TRUE(waitForTold(3));
    EXPECT_THAT(told, ElementsAre("+Ada", "-Ada", "+Bert"));
}

struct SessionCase {
    const char* what;
    bool encrypted;
    bool onlyTls1;
};
const SessionCase kSessionCases[] = {
    {"in the clear", false, false}, {"encrypted", true, false}, {"with TLS 1.0", true, true}};

TEST_F(UsbDevices, TellTheirValuesByDomainAndKey) {
    for (const auto& one : kSessionCases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->encrypted = one.encrypted;
        ada->onlyTls1 = one.onlyTls1;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        EXPECT_EQ(textOf(device->deviceValueForKey("ProductVersion")), "9.3.5");
        const auto will = device->deviceValueForKey("WillEncrypt", "com.apple.mobile.backup");
        ASSERT_TRUE(will) << device->lasterror();
        const auto all = device->allDeviceValuesForDomain("com.apple.mobile.backup");
        ASSERT_TRUE(all);
        EXPECT_EQ(all->dictionary().text("Version"), "2.4");
        EXPECT_FALSE(all->dictionary().has("ProductVersion"));
        EXPECT_FALSE(device->deviceValueForKey("WillEncrypt")) << "not of the default domain";
        EXPECT_FALSE(device->deviceValueForKey("ProductVersion", "com.apple.disk_usage"));
        EXPECT_EQ(device->lasterror(), "");
        EXPECT_EQ(textOf(device->publicValueForKey("DeviceName")), "Ada");
        EXPECT_FALSE(device->publicValueForKey("ProductVersion")) << "told in a session alone";
    }
}

TEST_F(UsbDevices, SessionsFollowEachOtherOnOneConnection) {
    for (const auto& one : kSessionCases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->encrypted = one.encrypted;
        ada->onlyTls1 = one.onlyTls1;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        ASSERT_TRUE(device->deviceConnect());
        for (const char* key : {"ProductVersion", "ProductType"})
            EXPECT_TRUE(device->deviceValueForKey(key)) << key << device->lasterror();
        EXPECT_TRUE(device->connected());
        ASSERT_TRUE(device->startSession());
        EXPECT_TRUE(device->deviceValueForKey("ProductType"));
        EXPECT_TRUE(device->deviceValueForKey("ProductVersion"));
        EXPECT_TRUE(device->stopSession());
        EXPECT_TRUE(device->deviceDisconnect());
        const Strings requests = ada->requests();
        EXPECT_EQ(std::count(requests.begin(), requests.end(), "StartSession"), 3);
        EXPECT_EQ(std::count(requests.begin(), requests.end(), "StopSession"), 3);
    }
}

TEST_F(UsbDevices, TheIdentifierIsKnownWhereTheDeviceDoesNotTellIt) {
    const auto ada = phone();
    ada->openValues = {"DeviceName"};
    const auto device = arrived(ada);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->udid(), "Ada-UDID");
}

TEST_F(UsbDevices, AreForgottenWhenTheDaemonDiesAndComeBackWithIt) {
    plugIn(1, phone("Ada"));
    plugIn(2, phone("Bert"));
    start();
    ASSERT_TRUE(waitForTold(2));
    const auto ada = access->devices()[0];
    daemon.stop();
    EXPECT_FALSE(ada->deviceValueForKey("ProductVersion"));
    EXPECT_EQ(ada->lastStatus(), kAMDNotConnected);
    ASSERT_TRUE(waitForTold(4));
    EXPECT_THAT(access->devices(), IsEmpty());
    std::vector<std::string> udids;
    EXPECT_EQ(attachedDevices(udids), kAMDNoDaemon);
    EXPECT_THAT(udids, IsEmpty());
    daemon.start();
    ASSERT_TRUE(waitForTold(6));
    EXPECT_THAT(told, ElementsAre("+Ada", "+Bert", "-Ada", "-Bert", "+Ada", "+Bert"));
}

TEST_F(UsbDevices, ComeWithADaemonThatStartsLater) {
    daemon.stop();
    std::vector<std::string> udids;
    EXPECT_EQ(attachedDevices(udids), kAMDNoDaemon);
    start();
    EXPECT_TRUE(access->subscribed());
    plugIn(1, phone());
    daemon.start();
    EXPECT_TRUE(waitForTold(1));
}

TEST_F(UsbDevices, WatchingEndsAndBeginsAgainAtAnyMoment) {
    plugIn(1, phone());
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

std::size_t openFiles() {
    std::size_t count = 0;
    for (const auto& one : std::filesystem::directory_iterator("/proc/self/fd")) {
        (void)one;
        ++count;
    }
    return count;
}

struct DaemonCase {
    const char* what;
    DaemonManner manner;
};
const DaemonCase kDaemonCases[] = {{"garbage", DaemonManner::Garbage},
                                   {"hangs up", DaemonManner::HangsUp},
                                   {"a length of 4 GiB", DaemonManner::HugeLength},
                                   {"a length below its head's", DaemonManner::SmallLength},
                                   {"a list that breaks off", DaemonManner::NoList}};

TEST_F(UsbDevices, ADaemonThatIsNoneIsWithstood) {
    for (const auto& one : kDaemonCases) {
        SCOPED_TRACE(one.what);
        daemon.meetWith(one.manner);
        std::vector<std::string> udids;
        EXPECT_EQ(attachedDevices(udids), kAMDNoDaemon);
        EXPECT_THAT(udids, IsEmpty());
        const std::size_t before = openFiles();
        start();
        const int clientsBefore = daemon.clients();
        access->waitForConnection({}, std::chrono::milliseconds(500));
        EXPECT_LT(daemon.clients() - clientsBefore, 200) << "asks without a pause";
        EXPECT_LT(openFiles(), before + 10) << "loses files";
        EXPECT_THAT(told, IsEmpty());
        daemon.meetWith(DaemonManner::Honest);
        plugIn(1, phone());
        EXPECT_TRUE(waitForTold(1)) << "it mends";
        access.reset();
        daemon.pullOut(1);
        told.clear();
    }
}

}  // namespace
}  // namespace salvor
