#pragma once

#include "services/MessageServices.h"

namespace salvor {

/// Messages of iOS 4 databases, by group. Deleted messages are not attached to conversations here:
/// deliberate.
class messageServicesIOS4 : public MessageServices {
  public:
    explicit messageServicesIOS4(ScanState& state) : MessageServices(state) {}

    void RecoverFromIOSBackup(const DeviceInfo& device) override { recoverGroups(device); }
    std::unique_ptr<AbstractSqLiteRecovery> GetRecoveryObject() override;
    void RecoverDeletedMessages(const DeviceInfo& device) override;
};

}  // namespace salvor
