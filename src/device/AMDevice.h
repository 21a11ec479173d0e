#pragma once

#include <memory>
#include <string>

#include "device/MobileDeviceFramework.h"
#include "util/Text.h"

namespace salvor {

/// One attached device, from its arrival to its removal. Between two reads it is neither connected
/// nor in a session: each read opens and closes what it needs. A failure leaves its text in
/// `lasterror`, is never thrown. No scan or backup calls `allDeviceValuesForDomain` and
/// `description`.
class AMDevice {
  public:
    /// Connects, reads name and identifier, disconnects. Null when connecting fails; `error` then
    /// has the text and `status` the number.
    static std::shared_ptr<AMDevice> initWithDevice(MobileDeviceFramework& framework,
                                                    AMDeviceRef device, std::string& error,
                                                    AMDStatus& status);
    /// The same; null tells that it failed.
    static std::shared_ptr<AMDevice> deviceFrom(MobileDeviceFramework& framework,
                                                AMDeviceRef device);

    const Text& deviceName() const { return _deviceName; }
    const Text& udid() const { return _udid; }

    /// A value of the default domain, read in a session.
    std::optional<AMDeviceValue> deviceValueForKey(const char* key);
    std::optional<AMDeviceValue> deviceValueForKey(const char* key, const char* domain);
    /// All values of a domain.
    std::optional<AMDeviceValue> allDeviceValuesForDomain(const char* domain);
    /// What the device tells any computer, trusted or not: starts no session. Within one that is
    /// open already it reads what the device tells there.
    std::optional<AMDeviceValue> publicValueForKey(const char* key);

    bool deviceConnect();
    bool deviceDisconnect();
    bool startSession();
    bool stopSession();

    bool isDevice(AMDeviceRef device) const { return _device == device; }
    void forgetDevice() { _device = 0; }

    /// "AMDevice('<name>')".
    std::string description() const;
    /// "<function> failed: <status in hexadecimal>" of the last failure, or "".
    const std::string& lasterror() const { return _lasterror; }
    AMDStatus lastStatus() const { return lastStatus_; }
    bool connected() const { return _connected; }
    bool inSession() const { return _insession; }

  private:
    AMDevice(MobileDeviceFramework& framework, AMDeviceRef device)
        : framework_(framework), _device(device) {}
    bool checkStatus(AMDStatus status, const char* from);
    std::optional<AMDeviceValue> read(const char* domain, const char* key, bool inSession);

    MobileDeviceFramework& framework_;
    AMDeviceRef _device;
    Text _deviceName;
    Text _udid;
    bool _connected = false;
    bool _insession = false;
    std::string _lasterror;
    AMDStatus lastStatus_ = kAMDSuccess;
};

}  // namespace salvor
