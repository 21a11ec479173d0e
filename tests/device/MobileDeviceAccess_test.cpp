#include "device/MobileDeviceAccess.h"

#include <gmock/gmock.h>

#include "tests/device/FakeFramework.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

using Strings = std::vector<std::string>;

/// As the listener it writes down what it is told, and how the device and the list stand then.
class DeviceAccess : public testing::Test, protected DeviceListener {
  protected:
    DeviceAccess() {
        fake.add(11, "Ada", "AA");
        fake.add(22, "Bert", "BB");
    }

    void deviceConnected(const std::shared_ptr<AMDevice>& device) override {
        note("connected", *device);
    }
    void deviceDisconnected(const std::shared_ptr<AMDevice>& device) override {
        note(device->isDevice(0) ? "disconnected, forgotten," : "disconnected", *device);
    }
    void note(const std::string& what, const AMDevice& device) {
        told.push_back(what + ' ' + device.deviceName().value_or("") + " of " +
                       std::to_string(access.devices().size()));
    }
    void arrive(AMDeviceRef device) { fake.happens(AMDeviceMessage::Connected, device); }
    void leave(AMDeviceRef device) { fake.happens(AMDeviceMessage::Disconnected, device); }
    Strings names() const {
        Strings all;
        for (const auto& device : access.devices()) all.emplace_back(*device->deviceName());
        return all;
    }

    FakeFramework& fake = *new FakeFramework;
    MobileDeviceAccess access{std::unique_ptr<MobileDeviceFramework>(&fake)};
    Strings told;
};

TEST_F(DeviceAccess, ListsArrivalsInTheirOrderAndTellsOfEach) {
    access.setListener(this);
    arrive(22);
    arrive(11);
    EXPECT_THAT(names(), ElementsAre("Bert", "Ada"));
    EXPECT_THAT(told, ElementsAre("connected Bert of 1", "connected Ada of 2"));
    EXPECT_EQ(access.devices()[1]->udid(), "AA");
    EXPECT_FALSE(access.devices()[1]->connected());
    EXPECT_EQ(fake.calls,
              "NotificationSubscribe 0 0, Connect 22, CopyValue 22 - DeviceName, "
              "CopyValue 22 - UniqueDeviceID, Disconnect 22, Connect 11, "
              "CopyValue 11 - DeviceName, CopyValue 11 - UniqueDeviceID, Disconnect 11");
}

TEST_F(DeviceAccess, ForgetsTheHandleThenTellsThenRemoves) {
    access.setListener(this);
    arrive(11);
    const auto device = access.devices()[0];
    told.clear();
    leave(22);
    leave(0);
    fake.happens(AMDeviceMessage::Unsubscribed, 11);
    fake.happens(static_cast<AMDeviceMessage>(99), 11);
    EXPECT_THAT(told, IsEmpty());
    leave(11);
    EXPECT_THAT(told, ElementsAre("disconnected, forgotten, Ada of 1"));
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_FALSE(device->deviceValueForKey("DeviceName"));
    EXPECT_EQ(device->lasterror(), "AMDeviceConnect failed: 102");
    EXPECT_EQ(device->description(), "AMDevice('Ada')");
}

TEST_F(DeviceAccess, ASecondListenerTakesThePlaceOfTheFirst) {
    DeviceListener second;
    access.setListener(this);
    arrive(11);
    fake.calls.clear();
    EXPECT_TRUE(access.setListener(&second));
    EXPECT_EQ(fake.calls, "") << "no second subscription";
    arrive(22);
    access.setListener(nullptr);
    leave(11);
    EXPECT_THAT(told, ElementsAre("connected Ada of 1"));
    EXPECT_THAT(names(), ElementsAre("Bert"));
}

// Kept: listener-always-set.
TEST_F(DeviceAccess, SubscribesForAListenerAndTriesAgain) {
    EXPECT_TRUE(access.setListener(nullptr));
    EXPECT_EQ(fake.calls, "");
    fake.subscribeStatus = kAMDNoDaemon;
    EXPECT_TRUE(access.setListener(this));
    EXPECT_FALSE(access.subscribed());
    EXPECT_FALSE(access.waitForConnection());
    fake.subscribeStatus = kAMDSuccess;
    EXPECT_TRUE(access.setListener(this));
    EXPECT_TRUE(access.subscribed());
}

TEST_F(DeviceAccess, WaitingEndsWithAnArrivalOrRemovalAlone) {
    access.setListener(this);
    fake.happensLater(AMDeviceMessage::Unsubscribed, 11);
    fake.happensLater(AMDeviceMessage::Connected, 11);
    fake.happensLater(AMDeviceMessage::Disconnected, 22);  // unknown, and ends a wait all the same
    fake.happensLater(AMDeviceMessage::Connected, 22);
    fake.devices[11].failing["Connect"] = kAMDNotConnected;
    EXPECT_TRUE(access.waitForConnection({}, 10s));
    EXPECT_EQ(access.unreachable().size(), 1U) << "the first wait ends with the arrival";
    EXPECT_TRUE(access.waitForConnection({}, 10s));
    EXPECT_THAT(names(), IsEmpty()) << "the second with the removal";
    EXPECT_TRUE(access.waitForConnection({}, 10s));
    EXPECT_THAT(names(), ElementsAre("Bert"));
    EXPECT_TRUE(access.waitForConnection({}, 1ms)) << "true also at the end of the limit";
    std::stop_source source;
    fake.runLoop().post([&source] { source.request_stop(); });
    EXPECT_TRUE(access.waitForConnection(source.get_token()));
}

enum State { Apart, Connected, InSession };

struct ReadCase {
    const char* what;
    State before;
    const char* failing;
    AMDStatus status;
    const char* calls;
    const char* error;  ///< nothing is read where there is one
};

constexpr auto kAllCalls =
    "Connect 11, StartSession 11, CopyValue 11 d k, StopSession 11, Disconnect 11";

const ReadCase kReadCases[] = {
    {"opens and closes both", Apart, "", 0, kAllCalls, ""},
    {"uses an open connection", Connected, "", 0,
     "StartSession 11, CopyValue 11 d k, StopSession 11", ""},
    {"uses an open session", InSession, "", 0, "CopyValue 11 d k", ""},
    {"cannot connect", Apart, "Connect", 0x104, "Connect 11", "AMDeviceConnect failed: 104"},
    {"cannot start a session", Apart, "StartSession", 17,
     "Connect 11, StartSession 11, Disconnect 11", "AMDeviceStartSession failed: 11"},
    {"cannot start a session in an open connection", Connected, "StartSession", 0xff,
     "StartSession 11", "AMDeviceStartSession failed: ff"},
    {"cannot stop the session", Apart, "StopSession", 0x105, kAllCalls,
     "AMDeviceStopSession failed: 105"},
    {"cannot disconnect", Apart, "Disconnect", 1, kAllCalls, "AMDeviceDisconnect failed: 1"},
};

TEST_F(DeviceAccess, AReadOpensAndClosesWhatItNeeds) {
    auto& ada = fake.devices[11];
    ada.values["d k"] = "value";
    for (const auto& one : kReadCases) {
        SCOPED_TRACE(one.what);
        ada.failing.clear();
        const auto device = AMDevice::deviceFrom(fake, 11);
        if (one.before != Apart) device->deviceConnect();
        if (one.before == InSession) device->startSession();
        ada.failing[one.failing] = one.status;
        fake.calls.clear();
        const bool reads = *one.error == '\0';
        EXPECT_EQ(textOf(device->deviceValueForKey("k", "d")), reads ? Text("value") : Text());
        EXPECT_EQ(fake.calls, one.calls);
        EXPECT_EQ(device->lasterror(), one.error);
        EXPECT_EQ(device->connected(), one.before != Apart);
        EXPECT_EQ(device->inSession(), one.before == InSession);
    }
}

}  // namespace
}  // namespace salvor
