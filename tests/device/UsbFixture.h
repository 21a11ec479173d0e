#pragma once

#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "device/MobileDeviceAccess.h"
#include "device/UsbDeviceFramework.h"
#include "tests/support/MuxDaemon.h"

namespace salvor {

/// The shipped framework and the list of devices over it, behind a stand-in daemon.
class UsbFixture : public testing::Test, protected DeviceListener {
  protected:
    using Strings = std::vector<std::string>;

    static std::shared_ptr<StandInDevice> phone(const std::string& name = "Ada") {
        auto made = std::make_shared<StandInDevice>(name + "-UDID", name);
        made->values["ProductVersion"] = "9.3.5";
        made->values["ProductType"] = "iPhone5,2";
        made->values["com.apple.mobile.backup/Version"] = "2.4";
        return made;
    }
    /// One that does not trust this computer yet.
    static std::shared_ptr<StandInDevice> stranger() {
        auto made = phone("Stranger");
        made->hostID = "";
        return made;
    }

    void start(std::chrono::milliseconds answerTime = std::chrono::seconds(10)) {
        const DeviceLimits limits{answerTime, std::size_t{1} << 16, std::chrono::milliseconds(10),
                                  std::chrono::seconds(20), answerTime};
        auto framework = std::make_unique<UsbDeviceFramework>(limits);
        framework->endWith(cancel.get_token());
        access = std::make_unique<MobileDeviceAccess>(std::move(framework));
        access->setListener(this);
    }

    /// Lets events come until it holds, for ten seconds at most.
    bool waitUntil(const std::function<bool()>& holds) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!holds()) {
            if (std::chrono::steady_clock::now() > end) return false;
            access->waitForConnection({}, std::chrono::milliseconds(20));
        }
        return true;
    }
    bool waitForTold(std::size_t count) {
        return waitUntil([&] { return told.size() >= count; });
    }
    /// Plugs a device in, in the place of the one before, and waits for it.
    std::shared_ptr<AMDevice> arrived(const std::shared_ptr<StandInDevice>& device) {
        if (!access) start();
        const auto& all = access->devices();
        const auto before = all.empty() ? nullptr : all.back();
        daemon.pullOut(lastId_);
        daemon.plugIn(++lastId_, device);
        const bool came = waitUntil([&] { return !all.empty() && all.back() != before; });
        return came ? all.back() : nullptr;
    }

    void deviceConnected(const std::shared_ptr<AMDevice>& device) override {
        told.push_back('+' + device->deviceName().value_or("?"));
    }
    void deviceDisconnected(const std::shared_ptr<AMDevice>& device) override {
        told.push_back('-' + device->deviceName().value_or("?"));
    }

    MuxDaemon daemon;
    std::stop_source cancel;
    std::unique_ptr<MobileDeviceAccess> access;
    Strings told;

  private:
    std::uint32_t lastId_ = 100;
};

}  // namespace salvor
