#include "device/MobileDeviceAccess.h"

#include <gmock/gmock.h>

#include "tests/device/FakeFramework.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

using Calls = std::vector<std::string>;

/// Writes down what it is told, and how the device and the list stand at that moment.
class Listener : public DeviceListener {
  public:
    explicit Listener(MobileDeviceAccess& access) : access_(access) {}

    void deviceConnected(const std::shared_ptr<AMDevice>& device) override {
        note("connected", *device);
    }
    void deviceDisconnected(const std::shared_ptr<AMDevice>& device) override {
        note(device->isDevice(0) ? "disconnected, forgotten," : "disconnected", *device);
    }

    Calls told;

  private:
    void note(const std::string& what, const AMDevice& device) {
        told.push_back(what + ' ' + device.deviceName().value_or("(no name)") + " of " +
                       std::to_string(access_.devices().size()));
    }
    MobileDeviceAccess& access_;
};

class DeviceAccess : public testing::Test {
  protected:
    DeviceAccess()
        : owned_(std::make_unique<FakeFramework>()), fake(*owned_), access(std::move(owned_)) {
        fake.add(11, "Ada", "AA");
        fake.add(22, "Bert", "BB");
    }

    void arrive(AMDeviceRef device) { fake.happens(AMDeviceMessage::Connected, device); }
    void leave(AMDeviceRef device) { fake.happens(AMDeviceMessage::Disconnected, device); }
    std::shared_ptr<AMDevice> made(AMDeviceRef device) {
        auto result = AMDevice::deviceFrom(fake, device);
        fake.calls.clear();
        return result;
    }
    Calls names() const {
        Calls all;
        for (const auto& device : access.devices()) all.push_back(*device->deviceName());
        return all;
    }

  private:
    std::unique_ptr<FakeFramework> owned_;

  protected:
    FakeFramework& fake;
    MobileDeviceAccess access;
    Listener listener{access};
};

TEST_F(DeviceAccess, ListsArrivalsInTheirOrderAndTellsOfEach) {
    access.setListener(&listener);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("NotificationSubscribe 0 0"));
    arrive(22);
    arrive(11);
    EXPECT_THAT(names(), ElementsAre("Bert", "Ada"));
    EXPECT_THAT(listener.told, ElementsAre("connected Bert of 1", "connected Ada of 2"));
    EXPECT_EQ(access.devices()[1]->udid(), "AA");
    EXPECT_FALSE(access.devices()[1]->connected());
    EXPECT_THAT(fake.calls, ElementsAre("Connect 22", "CopyValue 22 - DeviceName",
                                        "CopyValue 22 - UniqueDeviceID", "Disconnect 22",
                                        "Connect 11", "CopyValue 11 - DeviceName",
                                        "CopyValue 11 - UniqueDeviceID", "Disconnect 11"));
}

TEST_F(DeviceAccess, DoesNotListWhatCannotBeConnected) {
    fake.devices[11].failing["Connect"] = 0x1f;
    access.setListener(&listener);
    arrive(11);
    EXPECT_THAT(access.devices(), IsEmpty());
    EXPECT_THAT(listener.told, IsEmpty());
    ASSERT_EQ(access.unreachable().size(), 1U);
    EXPECT_EQ(access.unreachable()[0].device, 11U);
    EXPECT_EQ(access.unreachable()[0].status, 0x1fU);
    EXPECT_EQ(access.unreachable()[0].error, "AMDeviceConnect failed: 1f");
    leave(11);
    EXPECT_THAT(access.unreachable(), IsEmpty());
    EXPECT_THAT(listener.told, IsEmpty());
}

TEST_F(DeviceAccess, ListsADeviceWithoutNameOrIdentifier) {
    fake.devices[11].values.clear();
    access.setListener(&listener);
    arrive(11);
    ASSERT_EQ(access.devices().size(), 1U);
    EXPECT_EQ(access.devices()[0]->deviceName(), std::nullopt);
    EXPECT_EQ(access.devices()[0]->udid(), std::nullopt);
    EXPECT_EQ(access.devices()[0]->description(), "AMDevice('')");
    EXPECT_THAT(listener.told, ElementsAre("connected (no name) of 1"));
}

TEST_F(DeviceAccess, ForgetsTheHandleThenTellsThenRemoves) {
    access.setListener(&listener);
    arrive(11);
    arrive(22);
    listener.told.clear();
    leave(11);
    EXPECT_THAT(listener.told, ElementsAre("disconnected, forgotten, Ada of 2"));
    EXPECT_THAT(names(), ElementsAre("Bert"));
}

TEST_F(DeviceAccess, IgnoresTheRemovalOfAnUnknownDeviceAndOtherMessages) {
    access.setListener(&listener);
    arrive(11);
    listener.told.clear();
    leave(22);
    leave(0);
    fake.happens(AMDeviceMessage::Unsubscribed, 11);
    fake.happens(static_cast<AMDeviceMessage>(99), 11);
    EXPECT_THAT(names(), ElementsAre("Ada"));
    EXPECT_THAT(listener.told, IsEmpty());
}

TEST_F(DeviceAccess, ASecondListenerTakesThePlaceOfTheFirst) {
    Listener second(access);
    access.setListener(&listener);
    arrive(11);
    EXPECT_TRUE(access.setListener(&second));
    arrive(22);
    EXPECT_EQ(std::count(fake.calls.begin(), fake.calls.end(), "NotificationSubscribe 0 0"), 1);
    EXPECT_THAT(listener.told, ElementsAre("connected Ada of 1"));
    EXPECT_THAT(second.told, ElementsAre("connected Bert of 2"));
    access.setListener(nullptr);
    leave(11);
    EXPECT_THAT(names(), ElementsAre("Bert"));
    EXPECT_THAT(second.told, ElementsAre("connected Bert of 2"));
}

TEST_F(DeviceAccess, IsTrueAlsoWhenSubscribingFailsAndTriesAgain) {
    fake.subscribeStatus = kAMDNoDaemon;
    EXPECT_TRUE(access.setListener(&listener));
    EXPECT_FALSE(access.subscribed());
    EXPECT_FALSE(access.waitForConnection());
    fake.subscribeStatus = kAMDSuccess;
    EXPECT_TRUE(access.setListener(&listener));
    EXPECT_TRUE(access.subscribed());
}

TEST_F(DeviceAccess, WithoutListenerThereIsNoSubscription) {
    EXPECT_TRUE(access.setListener(nullptr));
    EXPECT_THAT(fake.calls, IsEmpty());
    EXPECT_FALSE(access.waitForConnection());
}

TEST_F(DeviceAccess, UnsubscribesAtItsEndOnlyWhatItSubscribed) {
    struct Kept : FakeFramework {
        explicit Kept(Calls& log) : log_(log) {}
        ~Kept() override { log_ = calls; }
        Calls& log_;
    };
    for (const bool subscribes : {true, false}) {
        Calls log;
        {
            MobileDeviceAccess one(std::make_unique<Kept>(log));
            if (subscribes) one.setListener(&listener);
        }
        EXPECT_EQ(log, subscribes
                           ? Calls({"NotificationSubscribe 0 0", "NotificationUnsubscribe 77"})
                           : Calls());
    }
}

TEST_F(DeviceAccess, WaitingEndsWithAnArrivalOrRemovalAlone) {
    access.setListener(&listener);
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
}

TEST_F(DeviceAccess, WaitingEndsWhenItIsStopped) {
    access.setListener(&listener);
    std::stop_source source;
    fake.runLoop().post([&source] { source.request_stop(); });
    EXPECT_TRUE(access.waitForConnection(source.get_token()));
}

struct ReadCase {
    const char* what;
    std::map<std::string, AMDStatus> failing;
    bool connected;  ///< before the read
    bool inSession;
    Calls calls;
    bool hasValue;
    const char* error;
};

const ReadCase kReadCases[] = {
    {"opens and closes both",
     {},
     false,
     false,
     {"Connect 11", "StartSession 11", "CopyValue 11 d k", "StopSession 11", "Disconnect 11"},
     true,
     ""},
    {"uses an open connection",
     {},
     true,
     false,
     {"StartSession 11", "CopyValue 11 d k", "StopSession 11"},
     true,
     ""},
    {"uses an open session", {}, true, true, {"CopyValue 11 d k"}, true, ""},
    {"cannot connect",
     {{"Connect", 0x104}},
     false,
     false,
     {"Connect 11"},
     false,
     "AMDeviceConnect failed: 104"},
    {"cannot start a session",
     {{"StartSession", 17}},
     false,
     false,
     {"Connect 11", "StartSession 11", "Disconnect 11"},
     false,
     "AMDeviceStartSession failed: 11"},
    {"cannot start a session in an open connection",
     {{"StartSession", 0xff}},
     true,
     false,
     {"StartSession 11"},
     false,
     "AMDeviceStartSession failed: ff"},
    {"cannot stop the session",
     {{"StopSession", 0x105}},
     false,
     false,
     {"Connect 11", "StartSession 11", "CopyValue 11 d k", "StopSession 11", "Disconnect 11"},
     false,
     "AMDeviceStopSession failed: 105"},
    {"cannot disconnect",
     {{"Disconnect", 1}},
     false,
     false,
     {"Connect 11", "StartSession 11", "CopyValue 11 d k", "StopSession 11", "Disconnect 11"},
     false,
     "AMDeviceDisconnect failed: 1"},
};

TEST_F(DeviceAccess, ARequestOpensAndClosesWhatItNeeds) {
    for (const auto& one : kReadCases) {
        SCOPED_TRACE(one.what);
        fake.devices[11].failing.clear();
        fake.devices[11].values["d k"] = "value";
        const auto device = made(11);
        if (one.connected) device->deviceConnect();
        if (one.inSession) device->startSession();
        fake.devices[11].failing = one.failing;
        fake.calls.clear();
        const auto value = device->deviceValueForKey("k", "d");
        EXPECT_EQ(value ? value->text() : std::nullopt, one.hasValue ? Text("value") : Text());
        EXPECT_EQ(fake.calls, one.calls);
        EXPECT_EQ(device->lasterror(), one.error);
        EXPECT_EQ(device->connected(), one.connected);
        EXPECT_EQ(device->inSession(), one.inSession);
    }
}

TEST_F(DeviceAccess, ReadsByKeyByDomainAndWholeDomains) {
    fake.devices[11].values["d -"] = "all";
    const auto device = made(11);
    EXPECT_EQ(device->deviceValueForKey("DeviceName")->text(), "Ada");
    EXPECT_EQ(device->allDeviceValuesForDomain("d")->text(), "all");
    EXPECT_FALSE(device->deviceValueForKey("Nothing"));
    EXPECT_EQ(device->lasterror(), "") << "a value that is not there is no failure";
    fake.calls.clear();
    EXPECT_EQ(device->publicValueForKey("DeviceName")->text(), "Ada");
    EXPECT_THAT(fake.calls,
                ElementsAre("Connect 11", "CopyValue 11 - DeviceName", "Disconnect 11"));
}

TEST_F(DeviceAccess, AForgottenDeviceHasNoValues) {
    access.setListener(&listener);
    arrive(11);
    const auto device = access.devices()[0];
    leave(11);
    EXPECT_FALSE(device->isDevice(11));
    EXPECT_FALSE(device->deviceValueForKey("DeviceName"));
    EXPECT_EQ(device->lasterror(), "AMDeviceConnect failed: 102");
    EXPECT_EQ(device->lastStatus(), kAMDNoDevice);
    EXPECT_EQ(device->description(), "AMDevice('Ada')");
}

}  // namespace
}  // namespace salvor
