#include "services/messageServicesIOS4.h"

#include "recovery/messages/MessagesIOS4SQLiteRecovery.h"

namespace salvor {

std::unique_ptr<AbstractSqLiteRecovery> messageServicesIOS4::GetRecoveryObject() {
    return std::make_unique<MessagesIOS4SQLiteRecovery>(state_, cancelled_);
}

void messageServicesIOS4::RecoverDeletedMessages(const DeviceInfo&) {}

}  // namespace salvor
