#pragma once

#include "services/MessageServices.h"

namespace salvor {

/// Messages of iOS 4 databases, by group. Kept: ios4-stays-unattached.
class messageServicesIOS4 : public MessageServices {
  public:
    explicit messageServicesIOS4(ScanState& state) : MessageServices(state) {}

    void RecoverFromIOSBackup(const DeviceInfo& device) override { recoverGroups(device); }
    std::unique_ptr<AbstractSqLiteRecovery> GetRecoveryObject() override;
    void RecoverDeletedMessages(const DeviceInfo& device) override;
};

}  // namespace salvor
