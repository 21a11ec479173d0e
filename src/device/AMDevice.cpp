#include "device/AMDevice.h"

#include <fmt/format.h>

namespace salvor {

std::shared_ptr<AMDevice> AMDevice::initWithDevice(MobileDeviceFramework& framework,
                                                   AMDeviceRef device, std::string& error,
                                                   AMDStatus& status) {
    std::shared_ptr<AMDevice> made(new AMDevice(framework, device));
    if (!made->deviceConnect()) {
        error = made->lasterror();
        status = made->lastStatus();
        return nullptr;
    }
    made->_deviceName = textOf(framework.AMDeviceCopyValue(device, nullptr, "DeviceName"));
    made->_udid = textOf(framework.AMDeviceCopyValue(device, nullptr, "UniqueDeviceID"));
    made->deviceDisconnect();
    return made;
}

std::shared_ptr<AMDevice> AMDevice::deviceFrom(MobileDeviceFramework& framework,
                                               AMDeviceRef device) {
    std::string error;
    AMDStatus status = kAMDSuccess;
    return initWithDevice(framework, device, error, status);
}

std::optional<AMDeviceValue> AMDevice::deviceValueForKey(const char* key) {
    return deviceValueForKey(key, nullptr);
}

std::optional<AMDeviceValue> AMDevice::deviceValueForKey(const char* key, const char* domain) {
    return read(domain, key, true);
}

std::optional<AMDeviceValue> AMDevice::allDeviceValuesForDomain(const char* domain) {
    return read(domain, nullptr, true);
}

std::optional<AMDeviceValue> AMDevice::publicValueForKey(const char* key) {
    return read(nullptr, key, false);
}

std::optional<AMDeviceValue> AMDevice::read(const char* domain, const char* key, bool inSession) {
    const bool connectsHere = !_connected;
    if (connectsHere && !deviceConnect()) return std::nullopt;
    std::optional<AMDeviceValue> value;
    const bool startsHere = inSession && !_insession;
    if (!startsHere || startSession()) {
        value = framework_.AMDeviceCopyValue(_device, domain, key);
        if (startsHere && !stopSession()) value.reset();  // any failure yields nothing
    }
    if (connectsHere && !deviceDisconnect()) value.reset();
    return value;
}

bool AMDevice::deviceConnect() {
    _connected = checkStatus(framework_.AMDeviceConnect(_device), "AMDeviceConnect");
    return _connected;
}

bool AMDevice::deviceDisconnect() {
    _connected = _insession = false;  // also when it fails: the next read begins from nothing
    return checkStatus(framework_.AMDeviceDisconnect(_device), "AMDeviceDisconnect");
}

bool AMDevice::startSession() {
    _insession = checkStatus(framework_.AMDeviceStartSession(_device), "AMDeviceStartSession");
    return _insession;
}

bool AMDevice::stopSession() {
    _insession = false;
    return checkStatus(framework_.AMDeviceStopSession(_device), "AMDeviceStopSession");
}

std::string AMDevice::description() const {
    return fmt::format("AMDevice('{}')", _deviceName.value_or(""));
}

bool AMDevice::checkStatus(AMDStatus status, const char* from) {
    if (status == kAMDSuccess) return true;
    lastStatus_ = status;
    _lasterror = fmt::format("{} failed: {:x}", from, status);
    return false;
}

}  // namespace salvor
