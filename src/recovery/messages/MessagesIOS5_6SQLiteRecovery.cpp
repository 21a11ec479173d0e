#include "recovery/messages/MessagesIOS5_6SQLiteRecovery.h"

#include "recovery/messages/MessageDates.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<Message> kAttributes[] = {
    {"text", storeText<&Message::Text>}, {"address", storeText<&Message::Address>},
    {"flags", storeMessageFlags},        {"date", storeMessageDate},
    {"date_read", storeMessageDateRead}, {"date_delivered", storeMessageDateDelivered},
};

}  // namespace

constinit const SignatureUse<Message> MessagesIOS5_6SQLiteRecovery::kSignature{
    {"HomeDomain", "sms.db", "MESSAGE"}, kAttributes};

MessagesIOS5_6SQLiteRecovery::MessagesIOS5_6SQLiteRecovery(ScanState& state,
                                                           std::stop_token cancelled)
    : MessageLiveCheckCarver(state, std::move(cancelled), kSignature, "iOS6") {}

std::int32_t MessagesIOS5_6SQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletediMessageCount = count;
    state_.DeletedFaceTimeCount = count;
    state_.DeletedSMSCount = count;
    return count;
}

std::int32_t MessagesIOS5_6SQLiteRecovery::incrementRecoveryCount() {
    return setRecoveryCount(state_.DeletedSMSCount + 1);
}

}  // namespace salvor
