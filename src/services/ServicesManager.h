#pragma once

#include <array>
#include <memory>
#include <stop_token>
#include <vector>

#include "services/ServiceMakers.h"

namespace salvor {

/// Creates the service of every category for one scan and runs them on the calling thread. What
/// they found lives with them, until the next scan.
/// Different services may be run by different threads at once; each runs once per scan.
class ServicesManager {
    using Service = std::unique_ptr<abstractServices>;
    std::array<Service, kCategoryCount> services_;  // first, for the names below refer to it

  public:
    ServicesManager(ScanState& state, const DeviceInfo& device,
                    const ServiceMakers& makers = builtServices());
    ServicesManager(const ServicesManager&) = delete;
    ServicesManager& operator=(const ServicesManager&) = delete;
    ~ServicesManager();

    /// The device whose databases are read from now on. Not while a service runs.
    void setDevice(const DeviceInfo& device) { device_ = device; }
    const DeviceInfo& device() const { return device_; }

    /// Runs `recoveryModules` in order; once `cancelled` is requested, no further one.
    void StartRecovery(const std::stop_token& cancelled = {});
    /// Runs the service with this `ServiceIndex`; any other number does nothing.
    void StartRecoveryofService(int index, const std::stop_token& cancelled = {});

    /// Null for a category that is not built.
    Service& service(Category category) { return services_.at(indexOf(category)); }
    // Those that have a name.
    Service& whatsAppServ = service(Category::WhatsApp);
    Service& callHistoryServ = service(Category::Calls);
    Service& calendarServ = service(Category::Calendar);
    Service& noteServ = service(Category::Notes);
    Service& messageServ = service(Category::Messages);
    Service& contactServ = service(Category::Contacts);
    Service& dcmiServ = service(Category::Photos);
    Service& internetHistoryServ = service(Category::Internet);
    /// Messages, contacts, notes, calendars, call history, WhatsApp. Kept: modules-of-a-recovery.
    std::vector<abstractServices*> recoveryModules;

  private:
    void run(abstractServices* service, const std::stop_token& cancelled) const;

    DeviceInfo device_;
};

}  // namespace salvor
