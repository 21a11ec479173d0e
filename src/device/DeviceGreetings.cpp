#include "device/DeviceGreetings.h"

#include "device/UsbDevice.h"

namespace salvor {
namespace {

Greeting greet(const AttachedDevice& attached, const DeviceLimits& limits,
               const std::stop_token& stop) {
    UsbDevice device(attached, limits);
    Greeting greeting;
    greeting.status = device.connect(stop);
    if (greeting.status != kAMDSuccess) return greeting;
    greeting.name = device.copyValue(nullptr, "DeviceName", stop);
    greeting.identifier = device.copyValue(nullptr, "UniqueDeviceID", stop);
    return greeting;
}

}  // namespace

DeviceGreetings::~DeviceGreetings() {
    for (auto& [device, thread] : asking_) thread.request_stop();  // all before the first is joined
}

void DeviceGreetings::begin(const AttachedDevice& device, const DeviceLimits& limits, Told told) {
    auto ask = [device, limits, told = std::move(told)](const std::stop_token& stop) {
        const Greeting greeting = greet(device, limits, stop);
        if (!stop.stop_requested()) told(device, greeting);
    };
    asking_.emplace_back(device, std::jthread(std::move(ask)));
}

void DeviceGreetings::end(const AttachedDevice& device) {
    std::erase_if(asking_, [&device](const auto& one) { return one.first == device; });
}

}  // namespace salvor
