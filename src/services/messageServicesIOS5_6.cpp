#include "services/messageServicesIOS5_6.h"

#include "recovery/messages/MessagesIOS5_6SQLiteRecovery.h"

namespace salvor {

std::unique_ptr<AbstractSqLiteRecovery> messageServicesIOS5_6::GetRecoveryObject() {
    return std::make_unique<MessagesIOS5_6SQLiteRecovery>(state_, cancelled_);
}

void messageServicesIOS5_6::RecoverDeletedMessages(const DeviceInfo& device) {
    recoverGroupMessages(device);
}

}  // namespace salvor
