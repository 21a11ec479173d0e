#include "recovery/WhatsAppMessagesSQLiteRecovery.h"

#include <algorithm>

#include "util/DateUtils.h"
#include "util/StringUtils.h"
#include "util/dataUtils.h"

namespace salvor {
namespace {

void storeDate(WhatsAppMessage& message, const OptionalColumnValue& value) {
    message.OriginalDate = columnDouble(value);
    if (value) message.Date = DateUtils::doubleIOSDateTimeToString(message.OriginalDate);
}

constexpr ColumnAttribute<WhatsAppMessage> kAttributes[] = {
    {"ZISFROMME", storeBool<&WhatsAppMessage::IsFromMe>},
    {"ZMessageDate", storeDate},
    {"ZFromJid", storeText<&WhatsAppMessage::ZFromJid>},
    {"ZPushName", storeText<&WhatsAppMessage::ZPushName>},
    {"ZStandZAid", storeText<&WhatsAppMessage::ZStandZAid>},
    {"ZText", storeText<&WhatsAppMessage::ZText>},
    {"ZToJid", storeText<&WhatsAppMessage::ZToJid>},
};

/// What `isRoughlyEqual` compares, absent and empty being the same.
std::string contentKey(const WhatsApp& row) {
    std::string key;
    for (const auto* part : {&row.MessageDate, &row.FromMsgID, &row.ToMsgID, &row.zText}) {
        const std::string_view text = part->view();
        key.append(std::to_string(text.size())).append(1, ':').append(text);
    }
    return key;
}

}  // namespace

constinit const SignatureUse<WhatsAppMessage> WhatsAppMessagesSQLiteRecovery::kSignature{
    {"net.whatsapp.WhatsApp", "ChatStorage.sqlite", "ZWAMESSAGE"}, kAttributes};

WhatsAppMessagesSQLiteRecovery::WhatsAppMessagesSQLiteRecovery(ScanState& state,
                                                               std::stop_token cancelled)
    : RecordCarver(state, std::move(cancelled), kSignature) {}

std::int32_t WhatsAppMessagesSQLiteRecovery::verifyDataPosition(Bytes text) {
    if (_field != "ZStandZAid") return kNoCorrection;
    const auto correction = dataUtils::indexOfCharinData(text, '-') - 10;
    return correction > 1 || correction < -1 ? kNoCorrection
                                             : static_cast<std::int32_t>(correction);
}

std::int32_t WhatsAppMessagesSQLiteRecovery::verifyData(const std::string& field) const {
    const auto* message = dynamic_cast<const WhatsAppMessage*>(_recObject.get());
    if (field != "ZStandZAid" || message == nullptr) return 0;
    return static_cast<std::int32_t>(StringUtils::indexOf(message->ZStandZAid, "-") - 11);
}

void WhatsAppMessagesSQLiteRecovery::recordCarved(const std::shared_ptr<WhatsAppMessage>& message) {
    const auto row = message->generateWhatsAppObject(state_);
    if (alreadyInDB(*row)) return;
    incrementRecoveryCount();
    state_.AllDeletedWhatsApp.push_back(row);
    state_.DeletedWhatsApp.push_back(row);
    RecoveredFiltered.push_back(message);
    ++state_.progress.recordsFound;
    state_.updateUIfoundRecoveredData();
}

bool WhatsAppMessagesSQLiteRecovery::alreadyInDB(const WhatsApp& row) {
    indexNewRows(state_.AllWhatsAppContent, liveIndexed_);
    indexNewRows(state_.AllDeletedWhatsApp, deletedIndexed_);
    return seen_.contains(contentKey(row));
}

void WhatsAppMessagesSQLiteRecovery::indexNewRows(const List<WhatsApp>& rows,
                                                  std::size_t& indexed) {
    for (; indexed < rows.size(); ++indexed) seen_.insert(contentKey(*rows[indexed]));
}

void WhatsAppMessagesSQLiteRecovery::filterMessages() {
    // Display texts of one form sort as their dates do.
    std::stable_sort(state_.DeletedWhatsApp.begin(), state_.DeletedWhatsApp.end(),
                     [](const auto& a, const auto& b) { return a->MessageDate < b->MessageDate; });
}

std::int32_t WhatsAppMessagesSQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletedWhatsAppCount = count;
    return count;
}

std::int32_t WhatsAppMessagesSQLiteRecovery::incrementRecoveryCount() {
    return ++state_.DeletedWhatsAppCount;
}

}  // namespace salvor
