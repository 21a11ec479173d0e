#include <span>
#include <thread>

#include "tests/device/UsbFixture.h"

namespace salvor {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using namespace std::chrono_literals;

class HostileDevices : public UsbFixture {
  protected:
    /// Long for an honest answer, short for those that do not come.
    static constexpr auto kPatience = 600ms;
    /// How an operation of at most a few answers' time must not go on.
    static constexpr auto kBound = 5s;
};

struct FaultCase {
    const char* what;
    DeviceFault fault;
    AMDStatus status;
};

const FaultCase kFaultCases[] = {
    {"hangs up", DeviceFault::HangsUp, kAMDHungUp},
    {"hangs up in the length", DeviceFault::HangsUpInLength, kAMDHungUp},
    {"hangs up in its answer", DeviceFault::HangsUpInAnswer, kAMDHungUp},
    {"answers garbage", DeviceFault::Garbage, kAMDInvalidAnswer},
    {"announces 4 GiB", DeviceFault::HugeLength, kAMDInvalidAnswer},
    {"sends 4 GiB", DeviceFault::FloodsHugeLength, kAMDInvalidAnswer},
    {"breaks a list off", DeviceFault::Truncated, kAMDInvalidAnswer},
    {"sends no dictionary", DeviceFault::NoDictionary, kAMDInvalidAnswer},
    {"answers something else", DeviceFault::OtherRequest, kAMDInvalidAnswer},
    {"drips", DeviceFault::DripFed, kAMDTimedOut},
    {"is silent", DeviceFault::Silent, kAMDTimedOut},
};

TEST_F(HostileDevices, AreNotListedWhenTheyFailAtOnce) {
    start(kPatience);
    std::uint32_t id = 0;
    for (const auto& one : kFaultCases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->faults["QueryType"] = one.fault;
        const auto begin = std::chrono::steady_clock::now();
        plugIn(++id, ada);
        ASSERT_TRUE(waitForUnreachable());
        EXPECT_LT(std::chrono::steady_clock::now() - begin, kBound);
        EXPECT_EQ(access->unreachable()[0].status, one.status);
        EXPECT_THAT(access->devices(), IsEmpty());
        daemon.pullOut(id);
        EXPECT_TRUE(waitUntil([&] { return access->unreachable().empty(); }));
    }
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(HostileDevices, GiveNoValueAndTheNextReadIsSoundAgain) {
    start(kPatience);
    for (const bool encrypted : {false, true}) {
        for (const auto& one : kFaultCases) {
            SCOPED_TRACE(std::string(one.what) + (encrypted ? ", encrypted" : ""));
            const auto ada = phone();
            ada->encrypted = encrypted;
            ada->faults["GetValue ProductVersion"] = one.fault;
            const auto device = arrived(ada);
            ASSERT_TRUE(device);
            const auto begin = std::chrono::steady_clock::now();
            EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
            EXPECT_LT(std::chrono::steady_clock::now() - begin, kBound);
            EXPECT_EQ(device->lastStatus(), one.status) << device->lasterror();
            EXPECT_FALSE(device->connected());
            EXPECT_EQ(textOf(device->deviceValueForKey("ProductType")), "iPhone5,2");
        }
    }
}

TEST_F(HostileDevices, GiveNoSession) {
    start(kPatience);
    for (const auto& one : kFaultCases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->encrypted = true;
        ada->faults["StartSession"] = one.fault;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
        EXPECT_EQ(device->lastStatus(), one.status) << device->lasterror();
        EXPECT_THAT(ada->requests(), Not(Contains("GetValue ProductVersion")));
        EXPECT_FALSE(device->connected());
        EXPECT_FALSE(device->inSession());
        EXPECT_EQ(textOf(device->publicValueForKey("DeviceName")), "Ada");
    }
}

TEST_F(HostileDevices, AnAnswerThatComesTooLateIsNotTakenForTheNext) {
    start(kPatience);
    const auto ada = phone();
    ada->faults["GetValue DeviceName"] = DeviceFault::Late;
    ada->lateness = kPatience + 100ms;
    const auto device = arrived(ada);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->deviceName(), std::nullopt);
    EXPECT_EQ(device->udid(), "Ada-UDID");
    ASSERT_TRUE(device->deviceConnect());
    EXPECT_FALSE(device->publicValueForKey("DeviceName"));
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(textOf(device->publicValueForKey("UniqueDeviceID")), "Ada-UDID");
}

struct ErrorCase {
    const char* error;
    AMDStatus status;
    bool notTrusted;
    const char* words;
};

const ErrorCase kErrorCases[] = {
    {"PasswordProtected", kAMDPasswordProtected, true, "the device is locked with its passcode"},
    {"InvalidHostID", kAMDInvalidHostID, true, "the device does not know this computer any more"},
    {"PairingDialogResponsePending", kAMDPairingPending, true,
     "the device asks whether this computer is to be trusted"},
    {"UserDeniedPairing", kAMDUserDeniedPairing, true,
     "this computer was not trusted on the device"},
    {"Nobody knows", kAMDUnknownError, false, "the device answered with error ff"},
    {"", kAMDUnknownError, false, "the device answered with error ff"},
};

TEST_F(HostileDevices, SayWhyThereIsNoSession) {
    for (const auto& one : kErrorCases) {
        SCOPED_TRACE(one.error);
        const auto ada = phone();
        ada->errors["StartSession"] = one.error;
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
        EXPECT_EQ(device->lastStatus(), one.status);
        EXPECT_EQ(meansNotTrusted(device->lastStatus()), one.notTrusted);
        EXPECT_EQ(describeStatus(device->lastStatus()), one.words);
    }
}

TEST_F(HostileDevices, AreAskedToTrustThisComputer) {
    start();
    std::uint32_t id = 0;
    for (const auto& one : std::span(kErrorCases).subspan(2, 2)) {  // each takes its keys' time
        SCOPED_TRACE(one.error);
        const auto ada = phone("Stranger " + std::to_string(id));
        ada->hostID = "";
        ada->errors["Pair"] = one.error;
        daemon.plugIn(++id, ada);
        ASSERT_TRUE(waitForTold(id));
        const auto device = access->devices().back();
        EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
        EXPECT_EQ(device->lastStatus(), one.status) << device->lasterror();
        EXPECT_THAT(ada->requests(), Contains("Pair"));
        EXPECT_THAT(ada->requests(), Not(Contains("StartSession")));
    }
}

TEST_F(HostileDevices, AreReadOnceTheyTrustThisComputer) {
    const auto ada = phone();
    ada->encrypted = true;
    ada->hostID = "";
    start();
    daemon.plugIn(1, ada);
    ASSERT_TRUE(waitForTold(1));
    const auto device = access->devices()[0];
    EXPECT_EQ(textOf(device->deviceValueForKey("ProductVersion")), "9.3.5") << device->lasterror();
    EXPECT_EQ(textOf(device->deviceValueForKey("ProductType")), "iPhone5,2");
    const Strings requests = ada->requests();
    EXPECT_EQ(std::count(requests.begin(), requests.end(), "Pair"), 1) << "the daemon keeps it";
}

TEST_F(HostileDevices, ADamagedPairRecordGivesNoEncryptedSession) {
    const Identity other = makeIdentity("other");
    const struct {
        const char* what;
        std::string certificate;
        std::string key;
    } cases[] = {{"no PEM", "certificate", "key"},
                 {"empty", "", ""},
                 {"another's key", hostIdentity().certificate, other.privateKey},
                 {"another's certificate", other.certificate, hostIdentity().privateKey}};
    start();
    std::uint32_t id = 0;
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        const auto ada = phone();
        ada->encrypted = true;
        PropertyListDictionary record;
        record.text("HostID", ada->hostID).text("SystemBUID", "BUID");
        record.data("HostCertificate", one.certificate).data("HostPrivateKey", one.key);
        daemon.keepPairRecord(ada->udid, record.xml());
        daemon.plugIn(++id, ada);
        ASSERT_TRUE(waitUntil([&] { return access->devices().size() == 1; }));
        const auto device = access->devices()[0];
        EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
        EXPECT_EQ(device->lastStatus(), kAMDTlsFailed) << device->lasterror();
        daemon.pullOut(id);
        EXPECT_TRUE(waitUntil([&] { return access->devices().empty(); }));
    }
}

TEST_F(HostileDevices, AComputerThatTheDeviceDoesNotKnowGetsNoValue) {
    const auto ada = phone();
    ada->encrypted = true;
    ada->hostCertificate = deviceIdentity().certificate;
    const auto device = arrived(ada);
    ASSERT_TRUE(device);
    EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
}

TEST_F(HostileDevices, PulledOutWhileItIsReadIsGone) {
    const auto ada = phone();
    ada->faults["GetValue ProductVersion"] = DeviceFault::Silent;
    start(60s);
    plugIn(1, ada);
    ASSERT_TRUE(waitForTold(1));
    std::jthread puller([this] {
        std::this_thread::sleep_for(100ms);
        daemon.pullOut(1);
    });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(access->devices()[0]->deviceValueForKey("ProductVersion"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kBound);
    ASSERT_TRUE(waitForTold(2));
    EXPECT_THAT(told, ElementsAre("+Ada", "-Ada"));
}

TEST_F(HostileDevices, CancellingEndsWhatWaits) {
    const struct {
        const char* what;
        const char* request;
        DeviceFault fault;
        bool encrypted;
    } cases[] = {{"a value", "GetValue ProductVersion", DeviceFault::Silent, false},
                 {"an encrypted value", "GetValue ProductVersion", DeviceFault::Silent, true},
                 {"a dripping value", "GetValue ProductVersion", DeviceFault::DripFed, false},
                 {"a session", "StartSession", DeviceFault::Silent, true},
                 {"trust", "Pair", DeviceFault::Silent, false}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        const bool stranger = one.request == std::string("Pair");
        const auto ada = phone(stranger ? "Stranger" : "Ada");
        ada->encrypted = one.encrypted;
        ada->faults[one.request] = one.fault;
        if (stranger) ada->hostID = "";
        cancel = std::stop_source();
        access.reset();
        start(60s);
        const auto device = arrived(ada);
        ASSERT_TRUE(device);
        std::jthread canceller([this] {
            std::this_thread::sleep_for(100ms);
            cancel.request_stop();
        });
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_FALSE(device->deviceValueForKey("ProductVersion"));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, kBound);
        EXPECT_FALSE(device->deviceValueForKey("ProductType")) << "nothing is asked any more";
        EXPECT_EQ(device->lastStatus(), kAMDCancelled);
        daemon.pullOut(101);
    }
}

}  // namespace
}  // namespace salvor
