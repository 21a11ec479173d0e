#pragma once

#include "device/AMDevice.h"

namespace salvor {

/// One connection and one session for many values, from its making to its end. Where it cannot have
/// a session it keeps the connection, in which public values can be read.
class OpenDevice {
  public:
    explicit OpenDevice(AMDevice& device)
        : device_(device),
          connected_(device.deviceConnect()),
          inSession_(connected_ && device.startSession()),
          status_(inSession_ ? kAMDSuccess : device.lastStatus()) {}
    OpenDevice(const OpenDevice&) = delete;
    OpenDevice& operator=(const OpenDevice&) = delete;
    ~OpenDevice() {
        if (inSession_) device_.stopSession();
        if (connected_) device_.deviceDisconnect();
    }

    bool connected() const { return connected_; }
    bool inSession() const { return inSession_; }
    /// Why there is no session.
    AMDStatus status() const { return status_; }

  private:
    AMDevice& device_;
    bool connected_;
    bool inSession_;
    AMDStatus status_;
};

}  // namespace salvor
