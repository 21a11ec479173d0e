#pragma once

#include <stop_token>

#include "records/DeviceInfo.h"

namespace salvor {

class ServicesManager;

/// The services of one scan as the recovery driver needs them. Different services are run by
/// different threads at once.
class ServiceRunner {
  public:
    virtual ~ServiceRunner() = default;
    /// The device whose databases the services read from now on. Called before any service runs.
    virtual void setDevice(const DeviceInfo& device) = 0;
    /// Runs the service with this `ServiceIndex` on the calling thread and
    /// ends it early, with what it has found, once `cancelled` is requested.
    virtual void StartRecoveryofService(int serviceCode, std::stop_token cancelled) = 0;
    /// The services themselves; null where they are none of the house.
    virtual ServicesManager* manager() { return nullptr; }
};

}  // namespace salvor
