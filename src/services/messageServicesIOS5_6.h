#pragma once

#include "services/MessageServices.h"

namespace salvor {

/// Messages of iOS 5 databases and of databases upgraded from them, by group.
class messageServicesIOS5_6 : public MessageServices {
  public:
    explicit messageServicesIOS5_6(ScanState& state) : MessageServices(state) {}

    void RecoverFromIOSBackup(const DeviceInfo& device) override { recoverGroups(device); }
    std::unique_ptr<AbstractSqLiteRecovery> GetRecoveryObject() override;
    void RecoverDeletedMessages(const DeviceInfo& device) override;
};

}  // namespace salvor
