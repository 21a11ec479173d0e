#include "device/UsbDeviceFramework.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/device/UsbFixture.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace std::chrono_literals;

class UsbDevices : public UsbFixture {
  protected:
    /// The identifiers of what the daemon lists, or its status.
    static std::string attached(std::chrono::milliseconds patience = std::chrono::seconds(10)) {
        DeviceLimits limits;
        limits.daemonTime = patience;
        std::vector<AttachedDevice> devices;
        const AMDStatus status = MuxClient(limits, {}).listDevices(devices);
        if (status != kAMDSuccess) return fmt::format("{:x}", status);
        std::string udids;
        for (const auto& device : devices) udids += device.udid + (device.overNetwork ? "~ " : " ");
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
    EXPECT_EQ(attached(), "Wireless-UDID~ Ada-UDID Bert-UDID ");
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
    EXPECT_EQ(attached(), "101");
    start();
    EXPECT_TRUE(access->subscribed());
    daemon.plugIn(1, phone("Ada"));
    daemon.plugIn(2, phone("Bert"));
    daemon.start();
    ASSERT_TRUE(waitForTold(2));
    const auto one = access->devices()[0];
    daemon.stop();
    EXPECT_FALSE(one->deviceValueForKey("ProductVersion"));
    EXPECT_EQ(one->lastStatus(), kAMDNoDaemon);
    ASSERT_TRUE(waitForTold(4));
    EXPECT_THAT(access->devices(), IsEmpty());
    daemon.start();
    ASSERT_TRUE(waitForTold(6));
    EXPECT_THAT(told, UnorderedElementsAre("+Ada", "+Bert", "-Ada", "-Bert", "+Ada", "+Bert"));
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

std::ptrdiff_t openFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(UsbDevices, ADaemonThatIsNoneIsWithstood) {
    using namespace std::string_literals;
    const std::string head = "\1\0\0\0\10\0\0\0\1\0\0\0"s;
    const struct {
        const char* what;
        DeviceFault fault;
        const char* status;
    } cases[] = {{"hangs up", {"", true}, "10a"},
                 {"garbage", {std::string(16, '\x7f') + "no packet at all"}, "10a"},
                 {"another's answer", {"\x10\0\0\0\1\0\0\0\10\0\0\0\2\0\0\0"s}, "10a"},
                 {"refuses", {"\x18\0\0\0"s + head + "<plist/>"}, "10a"},
                 {"a packet shorter than its head", {"\x0f\0\0\0"s + head}, "10a"},
                 {"announces 4 GiB", {"\xff\xff\xff\xff" + head + "<plist>"}, "10a"},
                 {"is silent", {""}, "109"},
                 {"drips", {std::string(500, ' '), false, 0ms, 100ms}, "109"},
                 {"announces more than it says", {"\0\1\0\0"s + head + "<plist>"}, "109"}};
    for (const auto& [what, fault, status] : cases) {
        SCOPED_TRACE(what);
        daemon.meetWith(fault);
        EXPECT_EQ(attached(300ms), status);
        const auto filesBefore = openFiles();
        const int clientsBefore = daemon.clients();
        start();
        access->waitForConnection({}, 300ms);
        EXPECT_LT(daemon.clients() - clientsBefore, 200) << "asks without a pause";
        EXPECT_LT(openFiles(), filesBefore + 10) << "loses files";
        EXPECT_THAT(told, IsEmpty());
        access.reset();  // within a moment, whatever it waits for
        daemon.meetWith(std::nullopt);
        start();
        daemon.plugIn(1, phone());
        EXPECT_TRUE(waitForTold(1)) << "it mends";
        access.reset();
        daemon.pullOut(1);
        told.clear();
    }
}

// What one does not tell is left as it was: a daemon that hesitates has lost no device.
TEST_F(UsbDevices, StayWhileTheDaemonIsSilent) {
    daemon.plugIn(1, phone());
    start(200ms);
    ASSERT_TRUE(waitForTold(1));
    daemon.meetWith(DeviceFault{""});
    access->waitForConnection({}, 600ms);
    daemon.meetWith(std::nullopt);
    daemon.plugIn(2, phone("Bert"));
    ASSERT_TRUE(waitForTold(2));
    EXPECT_THAT(told, ElementsAre("+Ada", "+Bert"));
}

TEST_F(UsbDevices, ASilentOneHoldsUpNoOther) {
    const auto silent = phone("Silent");
    const auto stuck = phone("Stuck");
    silent->faults["QueryType"] = stuck->faults["Connect"] = {""};
    daemon.plugIn(1, silent);
    daemon.plugIn(2, stuck);
    daemon.plugIn(3, phone());
    start(2s);
    ASSERT_TRUE(waitForTold(1));
    EXPECT_THAT(access->unreachable(), IsEmpty()) << "their time is not over";
    ASSERT_TRUE(waitUntil([&] { return access->unreachable().size() == 2; }));
    EXPECT_THAT(told, ElementsAre("+Ada"));
    Strings udids;
    for (const auto& one : access->unreachable()) udids.push_back(one.attached.udid);
    EXPECT_THAT(udids, UnorderedElementsAre("Silent-UDID", "Stuck-UDID"));
    daemon.pullOut(1);
    EXPECT_TRUE(waitUntil([&] { return access->unreachable().size() == 1; }));
}

/// A socket that listens at a port of this computer and says nothing.
int silentSocket(std::string& port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    ::listen(fd, 4);  // at any port
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    port = std::to_string(ntohs(address.sin_port));
    return fd;
}

TEST_F(UsbDevices, ADaemonIsFoundByAnyFormOfItsAddress) {
    daemon.plugIn(1, phone());
    const std::string given = std::getenv("USBMUXD_SOCKET_ADDRESS");
    std::string port;
    const int listening = silentSocket(port);
    const std::pair<std::string, std::string> cases[] = {
        {given, "Ada-UDID "},
        {given.substr(std::strlen("UNIX:")), "Ada-UDID "},
        {"UNIX:" + std::string(200, 'x'), "101"},
        {"127.0.0.1:" + port, "109"},
        {"[::ffff:127.0.0.1]:" + port, "109"},
        {"127.0.0.1:1", "101"},
        {"nonsense", "101"}};
    for (const auto& [address, expected] : cases) {
        ::setenv("USBMUXD_SOCKET_ADDRESS", address.c_str(), 1);
        EXPECT_EQ(attached(300ms), expected) << address;
    }
    ::close(listening);
}

}  // namespace
}  // namespace salvor
