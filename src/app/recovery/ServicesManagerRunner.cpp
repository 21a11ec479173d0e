#include "app/recovery/ServicesManagerRunner.h"

#include "services/ServicesManager.h"

namespace salvor {
namespace {

class ServicesManagerRunner : public ServiceRunner {
  public:
    explicit ServicesManagerRunner(ScanState& state) : manager_(state, state.deviceInfo) {}

    void setDevice(const DeviceInfo& device) override { manager_.setDevice(device); }
    void StartRecoveryofService(int serviceCode, std::stop_token cancelled) override {
        manager_.StartRecoveryofService(serviceCode, cancelled);
    }
    ServicesManager* manager() override { return &manager_; }

  private:
    ServicesManager manager_;
};

}  // namespace

std::unique_ptr<ServiceRunner> makeServicesManagerRunner(ScanState& state) {
    return std::make_unique<ServicesManagerRunner>(state);
}

}  // namespace salvor
