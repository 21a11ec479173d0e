#include "recovery/messages/MessagesIOS4SQLiteRecovery.h"

#include "recovery/messages/MessageDates.h"

namespace salvor {
namespace {

constexpr ColumnAttribute<Message> kAttributes[] = {
    {"text", storeText<&Message::Text>},
    {"address", storeText<&Message::Address>},
    {"flags", storeMessageFlags},
    {"date", storeMessageDate},
};

}  // namespace

constinit const SignatureUse<Message> MessagesIOS4SQLiteRecovery::kSignature{
    {"HomeDomain", "sms.db", "MESSAGE"}, kAttributes};

MessagesIOS4SQLiteRecovery::MessagesIOS4SQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : MessageLiveCheckCarver(state, std::move(cancelled), kSignature, "iOS4") {}

std::int32_t MessagesIOS4SQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletedSMSCount = count;
    return count;
}

std::int32_t MessagesIOS4SQLiteRecovery::incrementRecoveryCount() {
    return ++state_.DeletedSMSCount;
}

}  // namespace salvor
