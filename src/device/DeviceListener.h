#pragma once

#include <memory>

namespace salvor {

class AMDevice;

/// Learns of arrivals and removals. Both are optional; they come on the thread that runs the
/// framework's loop.
class DeviceListener {
  public:
    virtual ~DeviceListener() = default;
    virtual void deviceConnected(const std::shared_ptr<AMDevice>& device) { (void)device; }
    virtual void deviceDisconnected(const std::shared_ptr<AMDevice>& device) { (void)device; }
};

}  // namespace salvor
