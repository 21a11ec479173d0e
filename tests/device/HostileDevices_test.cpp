#include <cstdlib>
#include <thread>

#include "tests/device/UsbFixture.h"

namespace salvor {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using namespace std::chrono_literals;
using namespace std::string_literals;

class HostileDevices : public UsbFixture {
  protected:
    /// Long for an honest answer, short for those that do not come.
    static constexpr auto kPatience = 600ms;

    /// Reads a value that must not come, within at most a few answers' time.
    static void getNothing(AMDevice& device) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_FALSE(device.deviceValueForKey("ProductVersion"));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
        EXPECT_FALSE(device.connected());
        EXPECT_FALSE(device.inSession());
    }

    /// Does the work a little later.
    static std::jthread soon(std::function<void()> work) {
        return std::jthread([work = std::move(work)] {
            std::this_thread::sleep_for(100ms);
            work();
        });
    }
};

struct FaultCase {
    const char* what;
    DeviceFault fault;
    AMDStatus status;
};

constexpr auto kHuge = "\xff\xff\xff\xff";  // a length of 4 GiB
const DeviceFault kSilence{""};
const DeviceFault kDrips{std::nullopt, false, 0ms, 20ms};
const DeviceFault kGarbage{framed("\x01\x02 <<<garbage>>> \xff\xfe")};
const DeviceFault kBreaksOff{"\0\0\1\0<plist"s, true};
const DeviceFault kNoDictionary{
    framed("<plist version=\"1.0\"><array><string>Request</string></array></plist>")};

const FaultCase kFaultCases[] = {
    {"hangs up", {"", true}, kAMDHungUp},
    {"hangs up in the length", {"\0\0"s, true}, kAMDHungUp},
    {"hangs up in its answer", kBreaksOff, kAMDHungUp},
    {"answers garbage", kGarbage, kAMDInvalidAnswer},
    {"announces 4 GiB", {kHuge}, kAMDInvalidAnswer},
    {"sends much of 4 GiB", {kHuge + std::string(1 << 22, 'x')}, kAMDInvalidAnswer},
    {"breaks a list off",
     {framed("<plist version=\"1.0\"><dict><key>Request</key><str")},
     kAMDInvalidAnswer},
    {"sends no dictionary", kNoDictionary, kAMDInvalidAnswer},
    {"answers something else",
     {framed("<plist version=\"1.0\"><dict><key>Request</key><string>Other</string>"
             "<key>Value</key><string>x</string></dict></plist>")},
     kAMDInvalidAnswer},
    {"drips", kDrips, kAMDTimedOut},
    {"is silent", kSilence, kAMDTimedOut},
};

TEST_F(HostileDevices, AreNotListedWhenTheyFailAtOnce) {
    start(kPatience);
    for (const auto& one : kFaultCases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->faults["QueryType"] = one.fault;
        daemon.plugIn(1, ada);
        ASSERT_TRUE(waitUntil([&] { return !access->unreachable().empty(); }));
        EXPECT_EQ(access->unreachable()[0].status, one.status);
        EXPECT_THAT(access->devices(), IsEmpty());
        daemon.pullOut(1);
        EXPECT_TRUE(waitUntil([&] { return access->unreachable().empty(); }));
    }
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(HostileDevices, GiveNoValueAndTheNextReadIsSoundAgain) {
    const std::pair<const char*, bool> places[] = {{"GetValue ProductVersion", false},
                                                   {"GetValue ProductVersion", true},
                                                   {"StartSession", true}};
    start(kPatience);
    for (const auto& [request, encrypted] : places) {
        for (const auto& one : kFaultCases) {
            SCOPED_TRACE(std::string(one.what) + " at " + request);
            const auto ada = phone();
            ada->encrypted = encrypted;
            ada->faults[request] = one.fault;
            const auto device = arrived(ada);
            ASSERT_TRUE(device);
            getNothing(*device);
            EXPECT_EQ(device->lastStatus(), one.status) << device->lasterror();
            EXPECT_EQ(textOf(device->publicValueForKey("DeviceName")), "Ada");
        }
    }
}

TEST_F(HostileDevices, AnAnswerThatComesTooLateIsNotTakenForTheNext) {
    start(kPatience);
    const auto ada = phone();
    ada->faults["GetValue DeviceName"] = {std::nullopt, false, kPatience + 100ms};
    const auto device = arrived(ada);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->deviceName(), std::nullopt);
    EXPECT_EQ(device->udid(), "Ada-UDID");
    ASSERT_TRUE(device->deviceConnect());
    EXPECT_FALSE(device->publicValueForKey("DeviceName"));
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(textOf(device->publicValueForKey("UniqueDeviceID")), "Ada-UDID");
}

struct PairCase {
    const char* error;
    std::optional<DeviceFault> fault;
    AMDStatus status;
};

TEST_F(HostileDevices, AreAskedToTrustThisComputer) {
    const PairCase cases[] = {{"PairingDialogResponsePending", {}, kAMDPairingPending},
                              {"UserDeniedPairing", {}, kAMDUserDeniedPairing},
                              {"", kBreaksOff, kAMDUnknownError},
                              {"", kGarbage, kAMDInvalidAnswer},
                              {"", kNoDictionary, kAMDInvalidAnswer}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.status);
        const auto ada = stranger();
        if (*one.error != '\0') ada->errors["Pair"] = one.error;
        if (one.fault) ada->faults["Pair"] = *one.fault;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        getNothing(*device);
        EXPECT_EQ(device->lastStatus(), one.status) << device->lasterror();
        EXPECT_THAT(ada->requests(), Contains("Pair"));
        EXPECT_THAT(ada->requests(), Not(Contains("StartSession")));
    }
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", "/nowhere", 1);
    getNothing(*access->devices().back());
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(access->devices().back()->lastStatus(), kAMDNoPairingProgram);
}

TEST_F(HostileDevices, AreReadOnceTheyTrustThisComputer) {
    const auto forgotten = phone();
    forgotten->hostID = "ANOTHER";
    for (const bool forgets : {false, true}) {
        SCOPED_TRACE(forgets);
        const auto ada = forgets ? phone() : stranger();
        ada->encrypted = true;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        if (forgets) daemon.keepPairRecord(ada->udid, forgotten->pairRecord());
        EXPECT_EQ(textOf(device->deviceValueForKey("ProductVersion")), "9.3.5")
            << device->lasterror();
        EXPECT_EQ(textOf(device->deviceValueForKey("ProductType")), "iPhone5,2");
        const Strings requests = ada->requests();
        EXPECT_EQ(std::count(requests.begin(), requests.end(), "Pair"), 1) << "the daemon keeps it";
    }
}

TEST_F(HostileDevices, APairRecordThatDoesNotFitGivesNoEncryptedSession) {
    const struct {
        const char* what;
        std::string key;
        std::string certificateThatTheDeviceKnows;
        AMDStatus status;
    } cases[] = {
        {"no key", "key", hostIdentity().certificate, kAMDTlsFailed},
        {"another's key", deviceIdentity().privateKey, hostIdentity().certificate, kAMDTlsFailed},
        {"unknown to the device", hostIdentity().privateKey, deviceIdentity().certificate,
         kAMDHungUp}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->encrypted = true;
        ada->hostCertificate = one.certificateThatTheDeviceKnows;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        daemon.keepPairRecord(ada->udid, ada->pairRecord(one.key));
        getNothing(*device);
        EXPECT_EQ(device->lastStatus(), one.status) << device->lasterror();
    }
}

TEST_F(HostileDevices, PulledOutWhileItIsReadIsGone) {
    const auto ada = phone();
    ada->faults["GetValue ProductVersion"] = kSilence;
    start(60s);
    daemon.plugIn(1, ada);
    ASSERT_TRUE(waitForTold(1));
    const auto pulling = soon([this] { daemon.pullOut(1); });
    getNothing(*access->devices()[0]);
    ASSERT_TRUE(waitForTold(2));
    EXPECT_THAT(told, ElementsAre("+Ada", "-Ada"));
}

TEST_F(HostileDevices, CancellingEndsWhatWaits) {
    const struct {
        const char* request;
        DeviceFault fault;
        bool encrypted;
    } cases[] = {{"GetValue ProductVersion", kSilence, false},
                 {"GetValue ProductVersion", kSilence, true},
                 {"GetValue ProductVersion", kDrips, false},
                 {"StartSession", kSilence, true},
                 {"Pair", kSilence, false}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.request);
        const auto ada = one.request == "Pair"s ? stranger() : phone();
        ada->encrypted = one.encrypted;
        ada->faults[one.request] = one.fault;
        cancel = std::stop_source();
        start(60s);
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        const auto cancelling = soon([this] { cancel.request_stop(); });
        getNothing(*device);
        EXPECT_EQ(device->lastStatus(), kAMDCancelled);
        EXPECT_FALSE(device->deviceValueForKey("ProductType")) << "nothing is asked any more";
    }
}

}  // namespace
}  // namespace salvor
